#include "mesh/mesh_line_file.hpp"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "mesh/next_spacing.hpp"

namespace torvex {

namespace {

// A marked position and the plane that it names.
struct Mark {
    const char* meaning = "";
    float position = 0;
    long line = 0;  // of the file
    int plane = 0;
};

class LineFile {
 public:
    LineFile(const std::string& path, std::string_view text) : path_(path), input_(text) {}

    [[noreturn]] void refuse(long line, const std::string& what) const {
        stop(1, what, place(path_, line), "correct the file, or leave XYCONF blank");
    }

    int plane_count(const char* name) {
        const long line = input_.line();
        std::int32_t value = 0;
        if (!input_.read(value)) {
            refuse(input_.fault().line, input_.fault().message() + " (" + name + ")");
        }
        constexpr int most = 2 * most_cells_outward + 2;
        if (value < 4 || value > most) {
            refuse(line, std::string(name) + " must lie between 4 and " + std::to_string(most));
        }
        return value - 1;
    }

    float position(const char* meaning) {
        const long line = input_.line();
        float value = std::numeric_limits<float>::quiet_NaN();
        if (!input_.read(value)) {
            refuse(input_.fault().line,
                   input_.fault().message() + " (" + std::string(meaning) + ")");
        }
        if (!std::isfinite(value)) {
            refuse(line, "expected a finite number (" + std::string(meaning) + ")");
        }
        return value;
    }

    Mark mark(const char* meaning) {
        const long line = input_.line();
        return {meaning, position(meaning), line, 0};
    }

    void skip(const char* meaning) {
        const long line = input_.line();
        std::string_view ignored;
        if (!input_.read_line(ignored)) {
            refuse(line, "the file ends where " + std::string(meaning) + " should stand");
        }
    }

    // The planes of one line; the marks among them are found on the way.
    template <std::size_t N>
    Line1 planes(int n, const char* name, Mark (&marks)[N]) {
        Line1 values(n);
        for (int i = 1; i <= n; ++i) {
            const long line = input_.line();
            values(i) = position(name);
            if (i > 1 && !(values(i) > values(i - 1))) {
                refuse(line, std::string(name) + " does not rise from the value before");
            }
            for (Mark& mark : marks) {
                if (values(i) == mark.position) {
                    mark.plane = i;
                }
            }
        }
        for (const Mark& mark : marks) {
            if (mark.plane == 0) {
                refuse(mark.line, "no value of " + std::string(name) + " equals this position (" +
                                      mark.meaning + ")");
            }
        }
        return values;
    }

 private:
    const std::string& path_;
    ListInput input_;
};

// First m up to `last` with a distance of at least `target` from the centre plane; 0 if none.
int first_beyond(const Line1& line, int centre, int step, int last, float target) {
    for (int m = 1; m <= last; ++m) {
        if (std::abs(line(centre + step * m) - line(centre)) >= target) {
            return m;
        }
    }
    return 0;
}

void find_blend_positions(MeshLines& lines) {
    const Line1& x = lines.x_line;
    const Line1& y = lines.y_line;
    const int c = lines.i_centre;
    const int d = lines.j_centre;
    lines.n_blend_up =
        first_beyond(x, c, -1, lines.n_up, std::abs((x(1) + x(c - lines.n_add)) / 2.0F));
    lines.n_blend_down =
        first_beyond(x, c, +1, lines.n_down, std::abs((x(lines.nx) + x(c + lines.n_inner)) / 2.0F));
    lines.n_blend_side = first_beyond(y, d, +1, lines.n_side,
                                      std::abs((y(2 * d - 1) + y(d + lines.n_inner)) / 2.0F));
}

}  // namespace

MeshLines read_mesh_line_file(const std::string& path) {
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        stop(1, "the mesh-line file cannot be read", path,
             "XYCONF must name an existing text file, or be blank");
    }
    LineFile file(path, *text);
    MeshLines lines;
    lines.nx = file.plane_count("ni");
    lines.ny = file.plane_count("nj");
    Mark x_marks[] = {file.mark("x of the end of the additional zone"),
                      file.mark("x of the upwind edge of the study circle"),
                      file.mark("x of the centre"),
                      file.mark("x of the downwind edge of the study circle")};
    file.skip("the line before the marks of y");
    Mark y_marks[] = {file.mark("y of the centre"), file.mark("y of the edge of the study circle")};
    file.skip("the line before x_line");
    lines.x_line = file.planes(lines.nx, "x_line", x_marks);
    file.skip("the line before y_line");
    lines.y_line = file.planes(lines.ny, "y_line", y_marks);

    const Mark& add = x_marks[0];
    const Mark& x_centre = x_marks[2];
    const Mark& y_centre = y_marks[0];
    const Mark& circle = y_marks[1];
    lines.i_centre = x_centre.plane;
    lines.j_centre = y_centre.plane;
    lines.n_inner = circle.plane - y_centre.plane;
    lines.n_add = x_centre.plane - add.plane;
    lines.n_up = lines.i_centre - 1;
    lines.n_down = lines.nx - lines.i_centre;
    lines.n_side = lines.j_centre - 1;
    if (lines.ny != 2 * lines.n_side + 1) {
        file.refuse(y_centre.line, "the centre must be the middle plane of y_line");
    }
    if (lines.n_inner < 1) {
        file.refuse(circle.line, "the edge of the study circle must lie above the centre");
    }
    if (lines.n_inner > lines.n_down) {
        file.refuse(circle.line, "x_line has fewer planes downwind than the study circle needs");
    }
    if (lines.n_add < lines.n_inner) {
        file.refuse(add.line, "the additional zone must end upwind of the study circle");
    }
    if (lines.n_up > most_cells_outward || lines.n_down > most_cells_outward) {
        file.refuse(x_centre.line, "more than " + std::to_string(most_cells_outward) +
                                       " cells lie between the centre and an edge");
    }
    lines.max_rad = lines.y_line(lines.j_centre + lines.n_inner) - lines.y_line(lines.j_centre);
    find_blend_positions(lines);
    return lines;
}

}  // namespace torvex
