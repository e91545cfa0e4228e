#pragma once

#include <map>
#include <string>
#include <string_view>

namespace torvex {

// The case file in memory, so that every reader begins at its start.
struct CaseText {
    std::string name;  // as messages call it
    std::string text;
    bool available = true;
};

// The line in which a key got its value last, for messages about values found wrong later.
class KeyLines {
 public:
    void set(std::string_view key, long line) { lines_[std::string(key)] = line; }
    bool given(std::string_view key) const { return lines_.contains(key); }

    // The highest element of a list that the file gave a value; of SITE the highest record.
    void reach(std::string_view key, std::size_t element);
    std::size_t reached(std::string_view key) const;

    // "torvex.tin, line 35", or the file alone for a key that is not there.
    std::string where(const CaseText& file, std::string_view key) const;

 private:
    std::map<std::string, long, std::less<>> lines_;
    std::map<std::string, std::size_t, std::less<>> reached_;
};

// "; did you mean X?" for the nearest of the names, or nothing if none is near.
class NearestName {
 public:
    explicit NearestName(std::string_view wanted) : wanted_(wanted) {}
    void offer(std::string_view name);
    std::string hint() const;

 private:
    std::string wanted_;
    std::string best_;
    std::size_t distance_ = static_cast<std::size_t>(-1);
};

}  // namespace torvex
