#pragma once

#include <string>
#include <string_view>

namespace torvex {

// A table of fixed slots for an outside viewer: slot n is the 120 bytes from (n - 1)*120 on, the
// last of them a line feed. Slot 1 holds the number of the last used slot (I8), 1 when the table is
// empty. Slots are rewritten in place while viewers read; another writer is denied by an advisory
// lock on the whole file for as long as the table is open.
class ViewTable {
 public:
    enum class Existing { keep, discard };

    ViewTable() = default;
    ~ViewTable();
    ViewTable(const ViewTable&) = delete;
    ViewTable& operator=(const ViewTable&) = delete;

    // Opens or creates the file and takes the lock, before anything is changed: a file that another
    // run has open ends this run with "another run is using this directory". A new table, or one
    // whose contents are discarded, is empty afterwards.
    void open(const std::string& path, Existing existing);

    // False if the system reports a failure.
    bool close();
    bool is_open() const { return descriptor_ >= 0; }

    // Slot 1. A table cut off by a kill, whose slot 1 is no number of a slot in it, counts as many
    // slots as it has.
    int count() const;

    void append(std::string_view row);
    void write_last(std::string_view row);  // over the last used slot
    std::string slot(int n) const;          // without the blanks on the right

 private:
    friend void clear_view_log(ViewTable& table);

    int slots() const;
    void write_slot(int n, std::string_view row);
    void write_count(int n);

    int descriptor_ = -1;
    std::string path_;
};

// True if a run has the table of this name open. Nothing is changed or created.
bool table_is_held(const std::string& path);

// Blanks all slots but the first and sets the count to 1.
void clear_view_log(ViewTable& table);

// Copies a table over another one that may be open elsewhere for reading; the copy keeps its place
// on disk. False if `from` does not exist.
bool copy_view_log(const std::string& from, const std::string& to);

}  // namespace torvex
