#include "mesh/refit_lines.hpp"

#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"

namespace torvex {

namespace {

const std::string plain_name(file_names::mesh_log);
constexpr const char* refitted_name = "tmp";

// A plane of the line and where the recorded line has it.
struct Anchor {
    int plane = 0;
    float position = 0;
};

class MeshLog {
 public:
    MeshLog(std::string path, std::string_view text)
        : path_(std::move(path)), lines_(split_lines(text)) {}

    // The real at the head of a line, counted from 1.
    float real(std::size_t line) const {
        float value = 0.0F;
        if (line > lines_.size()) {
            refuse(line, "the file ends too early");
        }
        ListInput input(lines_[line - 1], static_cast<long>(line));
        if (!input.read(value)) {
            refuse(line, input.fault().message());
        }
        if (!std::isfinite(value)) {
            refuse(line, "expected a finite number");
        }
        return value;
    }

    // Lines of the first and the last value behind a heading.
    struct Block {
        std::size_t first = 0;
        std::size_t last = 0;
    };
    Block block(std::string_view heading) const {
        std::size_t at = 0;
        while (at < lines_.size() && trimmed(lines_[at]) != heading) {
            ++at;
        }
        Block found{at + 2, at + 1};
        for (++at; at < lines_.size() && left_adjusted(lines_[at]).substr(0, 1) != "#"; ++at) {
            found.last = at + 1;
        }
        if (found.last < found.first) {
            refuse(lines_.size(), "no values stand behind " + std::string(heading));
        }
        return found;
    }

    [[noreturn]] void refuse(std::size_t line, const std::string& what) const {
        stop(1, what, place(path_, static_cast<long>(line)),
             "remove this mesh log, or set DEBUG_MODE to another value than 1");
    }

 private:
    std::string path_;
    std::vector<std::string_view> lines_;
};

// Anchors in rising order of planes, the centre among them; a segment without length is left out.
Line1 refitted(const Line1& line, std::span<const Anchor> anchors, const MeshLog& recorded) {
    Line1 moved = line;
    for (std::size_t n = 1; n < anchors.size(); ++n) {
        const Anchor& low = anchors[n - 1];
        const Anchor& high = anchors[n];
        if (low.plane == high.plane) {
            continue;
        }
        const float scale = (high.position - low.position) / (line(high.plane) - line(low.plane));
        const bool inner_is_low = line(low.plane) >= 0.0F;
        const Anchor& inner = inner_is_low ? low : high;
        for (int i = low.plane; i <= high.plane; ++i) {
            moved(i) = inner.position + (line(i) - line(inner.plane)) * scale;
        }
        moved(low.plane) = low.position;
        moved(high.plane) = high.position;
    }
    for (int i = 2; i <= moved.size(); ++i) {
        if (!(moved(i) > moved(i - 1))) {
            recorded.refuse(4, "the recorded borders do not rise from edge to edge");
        }
    }
    return moved;
}

void write_lines(const MeshLines& lines) {
    std::string text;
    const auto integer = [&text](int value) { text += edit::I(value, 8) + '\n'; };
    const auto real = [&text](float value) { text += edit::E(value, 16, 8) + '\n'; };
    const int c = lines.i_centre;
    const int d = lines.j_centre;
    integer(lines.nx + 1);
    integer(lines.ny + 1);
    real(lines.x_line(c - lines.n_add));
    real(lines.x_line(c - lines.n_inner));
    real(lines.x_line(c));
    real(lines.x_line(c + lines.n_inner));
    text += "#==y==\n";
    real(lines.y_line(d));
    real(lines.y_line(d + lines.n_inner));
    text += "#==x(i)==\n";
    for (const float x : lines.x_line.values()) {
        real(x);
    }
    text += "#==y(j)==\n";
    for (const float y : lines.y_line.values()) {
        real(y);
    }
    write_text_file_whole(refitted_name, text);
}

}  // namespace

void refit_lines(const CaseSettings& settings, RunLog& log, MeshLines& lines) {
    std::string path = settings.run_prefix + plain_name;
    std::optional<std::string> text = read_text_file(path);
    if (!text) {
        path = plain_name;
        text = read_text_file(path);
    }
    if (!text) {
        log.timed(" No log-meshnumber of an earlier run: the mesh lines are not refitted.");
        return;
    }
    const MeshLog recorded(path, *text);
    const MeshLog::Block x = recorded.block("#==x(i)==");
    const MeshLog::Block y = recorded.block("#==y(j)==");
    const int c = lines.i_centre;
    const int d = lines.j_centre;
    const std::array x_anchors{
        Anchor{1, recorded.real(x.first)},           Anchor{c - lines.n_add, recorded.real(4)},
        Anchor{c - lines.n_inner, recorded.real(5)}, Anchor{c, 0.0F},
        Anchor{c + lines.n_inner, recorded.real(6)}, Anchor{lines.nx, recorded.real(x.last)}};
    const std::array y_anchors{Anchor{1, recorded.real(y.first)},
                               Anchor{d - lines.n_inner, recorded.real(7)}, Anchor{d, 0.0F},
                               Anchor{d + lines.n_inner, recorded.real(8)},
                               Anchor{lines.ny, recorded.real(y.last)}};
    lines.x_line = refitted(lines.x_line, x_anchors, recorded);
    lines.y_line = refitted(lines.y_line, y_anchors, recorded);
    write_lines(lines);
}

}  // namespace torvex
