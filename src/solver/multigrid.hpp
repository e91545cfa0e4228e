#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/multigrid_cycle.hpp"
#include "solver/multigrid_exchange.hpp"
#include "solver/solve_record.hpp"

namespace torvex {

// The equation of a pressure correction by its faces:
//
//   sum over the six faces of a (pp_P - pp_N) = su       in 2..nx, 2..ny, 2..nz
//
// a_e(i,j,k) belongs to the face between (i,j,k) and (i+1,j,k), a_n and a_t to those towards j+1
// and k+1. No face on the boundary takes part, whatever its coefficient.
struct FaceSystem {
    const Field3& a_e;  // ni*nj*nk
    const Field3& a_n;  // ni*nj*nk
    const Field3& a_t;  // ni*nj*nk
    const Field3& su;   // ni*nj*nk; its mean over the cells is taken off
};

// When a solution is good enough.
struct MultigridLimits {
    float stop_ratio = 0.1F;  // of the sum of residuals over the sum of |su|
    int cycles = 10;          // the most
};

// Solves the singular, symmetric equation of the pressure correction by conjugate gradients with a
// multigrid cycle as preconditioner. The level of pp is arbitrary. It makes its meshes at the first
// call on a mesh and keeps them.
//
// The record has r0 = sum |su|, r1 the sum of residuals reached and n the cycle that met the ratio,
// one more than allowed if none did, 0 if there was nothing to solve. With coefficients or sources
// that are not finite r1 and a are not.
class Multigrid {
 public:
    // pp in the interior becomes the solution; boundary values are left.
    SolveRecord solve(const FaceSystem& system, Field3& pp, const MultigridLimits& limits = {});

    // As a pressure solver (linear_solvers.hpp): from the pp that is there, r0 the sum of its
    // residuals. Of eq it reads ae, an, at and su; the matrix is symmetric.
    SolveRecord operator()(const CellRange& cells, LinearSystem& eq, Field3& pp, int cycles);

 private:
    struct Source {
        double sum = 0;  // of su
        double r0 = 0;   // sum of |r| before the mean is taken off
    };

    void allocate(const CellRange& cells);
    template <class T>
    Source load(const CellRange& cells, const FaceCoefficients& a, const Array3<T>& su);
    Source start_from(const CellRange& cells, const Field3& pp, Source source);
    SolveRecord conjugate_gradients(const Source& source, const MultigridLimits& limits);
    void cycle_and_step(int n);
    void store(const CellRange& cells, Storing storing, Field3& pp) const;

    MultigridMeshes meshes_;
    Field3 p_, q_;  // search direction and its product with the matrix
    Field3 w_;      // product of the preconditioned residual
    Field3 x_;      // solution, but for the last step
    int steps_ = 0;
    float alpha_ = 0;      // length of the last step
    double pq_ = 0;        // p.q
    double residual_ = 0;  // sum of |r|
};

}  // namespace torvex
