#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "base/record_file.hpp"
#include "results/result_files.hpp"

namespace torvex::test {

// Element (i,j,k) of array n is 1000 n + 100 i + 10 j + k.
inline Field3 sample(int n, int ni = 3, int nj = 2, int nk = 2) {
    Field3 field(ni, nj, nk);
    for (int k = 1; k <= nk; ++k) {
        for (int j = 1; j <= nj; ++j) {
            for (int i = 1; i <= ni; ++i) {
                field(i, j, k) = static_cast<float>(1000 * n + 100 * i + 10 * j + k);
            }
        }
    }
    return field;
}

inline bool same(const Field3& a, const Field3& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), 4 * a.size()) == 0;
}

// The fourteen arrays of a result in the order of the file.
struct Flow {
    std::array<Field3, 14> arrays;

    static Flow filled(int ni = 3, int nj = 2, int nk = 2) {
        Flow flow;
        for (int n = 1; n <= 14; ++n) {
            flow.arrays.at(static_cast<std::size_t>(n - 1)) = sample(n, ni, nj, nk);
        }
        return flow;
    }
    static Flow blank(int ni = 3, int nj = 2, int nk = 2) {
        Flow flow;
        flow.arrays.fill(Field3(ni, nj, nk, -7.0F));
        return flow;
    }

    template <class Field>
    FlowArrays<Field> fields() {
        auto& a = arrays;
        return {.u = &a[0],
                .v = &a[1],
                .w = &a[2],
                .p = &a[3],
                .tke = &a[4],
                .ted = &a[5],
                .flxU = &a[6],
                .flxV = &a[7],
                .flxW = &a[8],
                .vis = &a[9],
                .pp = &a[10],
                .lm = &a[11],
                .tkl = &a[12],
                .viskl = &a[13]};
    }
    ResultFields source() { return fields<const Field3>(); }
    ResultTargets target() { return fields<Field3>(); }

    // Arrays 1..n are those of filled(), the others as blank() made them.
    void expect_filled_up_to(int n) const {
        for (int m = 1; m <= 14; ++m) {
            const Field3& found = arrays.at(static_cast<std::size_t>(m - 1));
            EXPECT_TRUE(same(found, m <= n ? sample(m) : Field3(3, 2, 2, -7.0F))) << m;
        }
    }
};

// Data bytes of each record.
inline std::vector<std::int64_t> record_sizes(const std::string& path) {
    std::vector<std::int64_t> sizes;
    RecordReader reader;
    EXPECT_TRUE(reader.open(path));
    while (!reader.at_end()) {
        const std::optional<std::int64_t> size = reader.next_size();
        if (!size) {
            ADD_FAILURE() << reader.fault();
            break;
        }
        sizes.push_back(*size);
        reader.skip();
    }
    return sizes;
}

}  // namespace torvex::test
