#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace parlivo::bench {

/// One thing measured again and again.
class Samples {
  public:
    /// Room for so many, so that adding them asks for no memory.
    explicit Samples(std::size_t expected = 64) { values_.reserve(expected); }

    void add(double value) { values_.push_back(value); }
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

/// The table that a benchmark prints: what, its target, its median, the value that 95 % stay below, and
/// whether the median meets the target.
class Table {
  public:
    explicit Table(const char* title) {
        std::printf("\n%-58s %10s %10s %10s\n", title, "target", "median", "p95");
    }

    /// `target` is the largest good value; without one the row is for information.
    void row(const std::string& what, const char* unit, const Samples& samples,
             std::optional<double> target) {
        const bool missed = target && samples.median() > *target;
        missed_ = missed_ || missed;
        std::printf("%-58s %10s %10s %10s %s\n", what.c_str(),
                    target ? ("<= " + number(*target)).c_str() : "", number(samples.median()).c_str(),
                    (number(samples.quantile(0.95)) + " " + unit).c_str(), missed ? "MISSED" : "");
        std::fflush(stdout);
    }

    /// Exit status of the program.
    int status() const { return missed_ ? 1 : 0; }

  private:
    static std::string number(double value) {
        std::string text(32, '\0');
        text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.4g", value)));
        return text;
    }

    bool missed_ = false;
};

}  // namespace parlivo::bench
