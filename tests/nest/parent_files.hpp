#pragma once

#include <string>

#include "nest/nest_case.hpp"
#include "run/working_directory.hpp"

namespace torvex::test {

// The files that a finished parent of a NestCase leaves, in a directory of their own.
struct ParentFiles {
    explicit ParentFiles(const NestCase& c)
        : zero(c.parent.grid.ni, c.parent.grid.nj, c.parent.grid.nk),
          length(c.parent.grid.ni, c.parent.grid.nj, c.parent.grid.nk, 2.0F) {
        info();
        mesh(c.parent.grid);
        result(c, 7, 1);
    }

    void info(const std::string& text = "7\n 1e-4 2e-4 3e-4 4e-4\n") const {
        directory.write(stem + "restart.info", text);
    }
    void mesh(const GridGeometry& g) const { write_xyz(stem, g.xn, g.yn, g.zn); }
    void result(const NestCase& c, int iteration, int model) const {
        FlowState flow = c.parent.flow;
        for (const FlowField& field : kept_fields) {
            if (field.kept != Kept::start) {
                flow.*field.member = field.models == Models::with_length ? length : zero;
            }
        }
        write_vpkeout(stem, iteration, 0.0F, model, flow);
    }

    std::string stem = "restart-270_0-";
    Field3 zero, length;
    WorkingDirectory directory;
};

}  // namespace torvex::test
