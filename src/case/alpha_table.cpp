#include "case/alpha_table.hpp"

#include <cmath>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

void read_alpha_table(CaseSettings& settings) {
    const std::string& name = settings.DIRECTIONAL_ALPHA_FILE_NAME;
    const std::optional<std::string> text = read_text_file(name);
    if (!text) {
        stop(1, "cannot read the table of directional alpha \"" + name + "\"",
             "DIRECTIONAL_ALPHA_FILE_NAME of &NML_ER",
             "name an existing file, or set USE_DIRECTIONAL_ALPHA = F");
    }
    ListInput input(*text);
    const auto fail = [&input, &name] {
        stop(1, "table of directional alpha: " + input.fault().message(),
             place(name, input.fault().line),
             "expected a count, then one line of direction and alpha for each");
    };
    std::int32_t n = 0;
    if (!input.read(n)) {
        fail();
    }
    if (n < 1) {
        stop(1,
             "table of directional alpha: the count is " + std::to_string(n) +
                 ", expected at least 1",
             place(name, 1));
    }
    settings.alpha_direction.clear();
    settings.alpha_value.clear();
    for (std::int32_t entry = 0; entry < n; ++entry) {
        float direction = 0;
        float alpha = 0;
        const long line = input.line();
        if (!input.read(direction, alpha)) {
            fail();
        }
        if (!std::isfinite(direction) || !std::isfinite(alpha)) {
            stop(1, "table of directional alpha: expected a finite direction and alpha",
                 place(name, line));
        }
        settings.alpha_direction.push_back(direction);
        settings.alpha_value.push_back(alpha);
    }
    const float first = settings.alpha_value.front();
    settings.alpha_direction.push_back(360.0F + first);
    settings.alpha_value.push_back(first);
}

}  // namespace torvex
