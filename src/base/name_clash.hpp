#pragma once

#include <optional>
#include <span>
#include <string>

namespace torvex {

// A file that a run reads.
struct NamedInput {
    std::string key;   // what names it, for messages
    std::string path;  // blank: none
};

// An input, and the output that would overwrite it.
struct NameClash {
    NamedInput input;
    std::string output;
};

// The first input that an output would overwrite: both paths lead to the same place, or both names
// stand for the same file by way of links. Relative paths count from the current directory. The
// files need not exist.
std::optional<NameClash> name_clash(std::span<const NamedInput> inputs,
                                    std::span<const std::string> outputs);

}  // namespace torvex
