// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace parlivo::bench {

/// Repeated measurements of one quantity.
class Samples {
  public:
    /// Room for so many, so that adding them asks for no memory.
    explicit Samples(std::size_t expected = 64) { values_.reserve(expected); }

    void add(double value) { values_.push_back(value); }
    bool empty() const { return values_.empty(); }
    double median() const { return quantile(0.5); }
    double quantile(double share) const {
        auto sorted = values_;
        std::sort(sorted.begin(), sorted.end());
        const auto last = static_cast<double>(sorted.size() - 1);
        return sorted.at(static_cast<std::size_t>(std::lround(share * last)));
    }

  private:
    std::vector<double> values_;
};

/// The Markdown table that a benchmark prints: what, its target, its median, the value that 95 % stay below,
/// and whether the median meets the target; where there is a rival, also its median and how many times ours
/// it is.
class Table {
  public:
    explicit Table(const std::string& title, std::string rival = {}) : rival_(std::move(rival)) {
        std::printf("\n### %s\n\n| what | target | median | p95 |", title.c_str());
        if (!rival_.empty()) std::printf(" %s | %s / ours |", rival_.c_str(), rival_.c_str());
        std::printf(" verdict |\n|---|---:|---:|---:|%s---|\n", rival_.empty() ? "" : "---:|---:|");
        std::fflush(stdout);
    }

    /// `target` is the largest good value; without one the row is for information.
    void row(const std::string& what, const std::string& unit, const Samples& samples,
             std::optional<double> target, const Samples& rival = Samples(0)) {
        std::printf("| %s | %s | %s | %s |", what.c_str(),
                    target ? ("≤ " + quantity(*target, unit)).c_str() : "",
                    quantity(samples.median(), unit).c_str(), quantity(samples.quantile(0.95), unit).c_str());
        if (!rival_.empty()) printComparison(unit, samples, rival);
        std::printf(" %s |\n", verdict(samples, target));
        std::fflush(stdout);
    }

    /// Exit status of the program.
    int status() const { return missed_ ? 1 : 0; }

  private:
    static std::string quantity(double value, const std::string& unit) {
        std::string text(32, '\0');
        text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.3g", value)));
        if (std::abs(value) >= 1'000) text = std::to_string(std::llround(value));
        return unit.empty() ? text : text + ' ' + unit;
    }

    static void printComparison(const std::string& unit, const Samples& samples, const Samples& rival) {
        // A ratio of numbers near zero means nothing.
        const bool comparable = !rival.empty() && rival.median() > 0 && samples.median() > 0;
        std::printf(" %s | %s |", rival.empty() ? "" : quantity(rival.median(), unit).c_str(),
                    comparable ? quantity(rival.median() / samples.median(), "").c_str() : "");
    }

    const char* verdict(const Samples& samples, std::optional<double> target) {
        if (!target) return "";
        if (samples.median() > *target) {
            missed_ = true;
            return "**missed**";
        }
        return samples.quantile(0.95) > *target ? "met, not by p95" : "met";
    }

    std::string rival_;
    bool missed_ = false;
};

}  // namespace parlivo::bench
