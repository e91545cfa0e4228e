#include "run/mesh_log.hpp"

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/whole_file.hpp"

namespace torvex {

namespace {

std::string count_line(int count, const char* label) {
    return edit::I(count, 4) + " (" + label + ")\n";
}

std::string border_line(const Line1& line, int plane, const char* label) {
    const float border = plane >= 1 && plane <= line.size() ? line(plane) : 0.0F;
    return edit::E(border, 16, 8) + " (" + label + ")\n";
}

// The positions of the cell-centred values: both ends and the midpoints between.
std::string line_block(const char* heading, const Line1& line) {
    std::string text = std::string(heading) + "\n";
    const auto add = [&text](float value) { text += edit::E(value, 16, 8) + "\n"; };
    if (line.size() == 0) {
        return text;
    }
    add(line(1));
    for (int i = 2; i <= line.size(); ++i) {
        add((line(i) + line(i - 1)) * 0.5F);
    }
    add(line(line.size()));
    return text;
}

}  // namespace

void write_mesh_log(const std::string& run_prefix, const MeshLines& lines) {
    const int ic = lines.i_centre;
    const int jc = lines.j_centre;
    std::string text =
        count_line(lines.ni, "ni") + count_line(lines.nj, "nj") + count_line(lines.nk, "nk");
    text += border_line(lines.x_line, ic - lines.n_add, "x1");
    text += border_line(lines.x_line, ic - lines.n_inner, "x2");
    text += border_line(lines.x_line, ic + lines.n_inner, "x3");
    text += border_line(lines.y_line, jc - lines.n_inner, "y1");
    text += border_line(lines.y_line, jc + lines.n_inner, "y2");
    text += line_block("#==x(i)==", lines.x_line);
    text += line_block("#==y(j)==", lines.y_line);
    text += line_block("#==x(i)==", lines.z_line);  // the heading of the z block is the x one
    write_text_file_whole(run_prefix + std::string(file_names::mesh_log), text);
}

}  // namespace torvex
