// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace parlivo::bench {

/// How a text differs from the one that was meant, by the shortest way from the one to the other
/// (Levenshtein), in code points.
struct Differences {
    std::size_t wrong = 0;
    std::size_t lost = 0;
    std::size_t doubled = 0;  ///< too much, the same character twice being the common case

    std::size_t sum() const { return wrong + lost + doubled; }
    Differences& operator+=(const Differences& other) {
        wrong += other.wrong;
        lost += other.lost;
        doubled += other.doubled;
        return *this;
    }
};

inline Differences differences(std::u32string_view meant, std::u32string_view got) {
    struct Cell {
        std::size_t cost = 0;
        Differences kinds;
    };
    const auto step = [](Cell from, std::size_t Differences::*kind) {
        ++from.cost;
        ++(from.kinds.*kind);
        return from;
    };
    const auto cheaper = [](const Cell& a, const Cell& b) { return a.cost < b.cost; };
    std::vector<Cell> above(got.size() + 1);
    for (std::size_t j = 1; j < above.size(); ++j) above[j] = step(above[j - 1], &Differences::doubled);
    for (const char32_t character : meant) {
        std::vector<Cell> row(above.size());
        row[0] = step(above[0], &Differences::lost);
        for (std::size_t j = 1; j < row.size(); ++j) {
            const bool equal = character == got[j - 1];
            const Cell kept = equal ? above[j - 1] : step(above[j - 1], &Differences::wrong);
            row[j] = std::min(
                {kept, step(above[j], &Differences::lost), step(row[j - 1], &Differences::doubled)}, cheaper);
        }
        above = std::move(row);
    }
    return above.back().kinds;
}

}  // namespace parlivo::bench
