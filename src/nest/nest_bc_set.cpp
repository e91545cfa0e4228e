#include "nest/nest_bc_set.hpp"

#include "nest/boundary_values.hpp"
#include "nest/dstr_momen.hpp"
#include "nest/nest_balance.hpp"
#include "results/result_files.hpp"

namespace torvex {

void nest_bc_set(const NestPass& pass, const std::string& parent_stem,
                 const std::string& child_stem, FlowState& s) {
    {
        const Parent parent = read_parent(pass, parent_stem);
        set_boundary_values(pass, parent, s);
        dstrMomen(pass, parent, s);
    }
    balance_boundaries(pass, s);
    if (!child_stem.empty()) {
        write_vpkeinp(child_stem, s);
    }
}

}  // namespace torvex
