#include "roughness/roughness_files.hpp"

#include "base/edit.hpp"
#include "base/whole_file.hpp"

namespace torvex {

void write_roughness_table(const std::string& path, const Field2& z0) {
    std::string text;
    for (int j = z0.nj(); j >= 1; --j) {
        for (int i = 1; i <= z0.ni(); ++i) {
            text += edit::F(100.0F * z0(i, j), 11, 4);
        }
        text += '\n';
    }
    write_text_file_whole(path, text);
}

}  // namespace torvex
