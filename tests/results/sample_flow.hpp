#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "base/record_file.hpp"
#include "solver/flow_fields.hpp"
#include "solver/flow_state.hpp"

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

// Kept field n of the table, from 1, is sample(n).
inline FlowState filled_flow(int ni = 3, int nj = 2, int nk = 2) {
    FlowState flow;
    int n = 0;
    for (const FlowField& field : kept_fields) {
        flow.*field.member = sample(++n, ni, nj, nk);
    }
    return flow;
}

inline FlowState blank_flow(int ni = 3, int nj = 2, int nk = 2) {
    FlowState flow;
    for (const FlowField& field : kept_fields) {
        (flow.*field.member).allocate(ni, nj, nk, -7.0F);
    }
    return flow;
}

// The first fields are those of filled_flow(), the others as blank_flow() made them.
inline void expect_filled_up_to(std::size_t last, const FlowState& flow) {
    const FlowState filled = filled_flow();
    const FlowState blank = blank_flow();
    for (std::size_t n = 0; n < kept_fields.size(); ++n) {
        const auto member = kept_fields[n].member;
        EXPECT_TRUE(same(flow.*member, (n < last ? filled : blank).*member)) << kept_fields[n].name;
    }
}

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
