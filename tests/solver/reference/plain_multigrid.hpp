#pragma once

#include <cstddef>
#include <vector>

// The multigrid solver once more, plainly: one cell, line or face at a time, in double precision
// and with the pivots of the textbook, for comparison with the passes of the solver.
namespace torvex::plain {

// Cells 1..ni, 1..nj, 1..nk; outside everything is 0.
class Values {
 public:
    Values() = default;
    Values(int ni, int nj, int nk)
        : ni_(ni), nj_(nj), nk_(nk), x_(std::size_t(ni) * std::size_t(nj) * std::size_t(nk)) {}
    double operator()(int i, int j, int k) const { return inside(i, j, k) ? x_[at(i, j, k)] : 0.0; }
    double& set(int i, int j, int k) { return x_.at(at(i, j, k)); }

 private:
    bool inside(int i, int j, int k) const {
        return i >= 1 && i <= ni_ && j >= 1 && j <= nj_ && k >= 1 && k <= nk_;
    }
    std::size_t at(int i, int j, int k) const {
        return std::size_t(i - 1) +
               std::size_t(ni_) * (std::size_t(j - 1) + std::size_t(nj_) * std::size_t(k - 1));
    }
    int ni_ = 0, nj_ = 0, nk_ = 0;
    std::vector<double> x_;
};

struct Mesh {
    Mesh(int ni_, int nj_, int nk_);
    int ni, nj, nk;
    Values ae, an, at, r, z;
};

// (A x) of a cell.
double product(const Mesh& m, const Values& x, int i, int j, int k);

// Solves the line of column (i,j) for z with its neighbours as they stand.
void solve_line(Mesh& m, int i, int j, double shift);

// The coefficients of the next mesh, and its r: the residual of z.
Mesh coarse_mesh(const Mesh& fine);
void restrict_residual(const Mesh& fine, Mesh& coarse);

// Adds the z of the next mesh.
void prolong(const Mesh& coarse, Mesh& fine);

// z from r.
void v_cycle(Mesh& m);

}  // namespace torvex::plain
