#include "base/date_stamp.hpp"

#include <array>
#include <ctime>

namespace torvex {

std::string date_stamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y/%m/%d %H:%M:%S", &local);
    return {text.data(), length};
}

}  // namespace torvex
