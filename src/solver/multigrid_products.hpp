#pragma once

#include "solver/multigrid_level.hpp"

namespace torvex {

// Scalar products over one slab, or over all.
struct Products {
    double zr = 0;  // z.r
    double zw = 0;  // z.(A z)
    double zq = 0;  // z.q
};

// Slab j of w = A z, and the products of z with r, w and, if it is given, q.
Products multiply(const MultigridLevel& level, int j, const Field3* q, Field3& w);

// What a step of the conjugate gradients changes, arrays of the mesh.
struct Directions {
    const Field3& z;
    const Field3& w;
    Field3& p;
    Field3& q;
    Field3& x;
    Field3& r;
};
struct Step {
    int number;   // 1, 2, ..
    float last;   // the length of the step before
    float alpha;  // and of this
    float beta;
};

// Slab j of step 2 and later; returns the sum of |r|:
//
//   x = x + last p  (x = last p in step 2),  p = z + beta p,  q = w + beta q,  r = r - alpha q
double take_step(const MultigridLevel& level, int j, const Step& step, const Directions& d);

// Slab j of r = r - alpha q; the sum of |r|. And of r = r - mean in the cells.
double take_first_step(const MultigridLevel& level, int j, float alpha, const Field3& q, Field3& r);
double take_off(const MultigridLevel& level, int j, float mean, Field3& r);

}  // namespace torvex
