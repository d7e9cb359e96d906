// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace zarn::bench {

/// The middle value; of an even count, the lower of the two in the middle.
inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>((values.size() - 1) / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

inline double secondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Comparison {
    double ours = 0;
    double baseline = 0;
    double ratio = 0;
};

/// Runs both in turn, so that a drift of the machine's speed meets both, and takes the median of
/// each and of the ratios of neighbours. The order within a pair alternates.
inline Comparison interleave(
    int pairs, const std::function<double()>& ours, const std::function<double()>& baseline)
{
    std::vector<double> a;
    std::vector<double> b;
    std::vector<double> ratios;
    for (int i = 0; i < pairs; ++i) {
        double ourSeconds = 0;
        double baselineSeconds = 0;
        if (i % 2 == 0) {
            ourSeconds = ours();
            baselineSeconds = baseline();
        } else {
            baselineSeconds = baseline();
            ourSeconds = ours();
        }
        a.push_back(ourSeconds);
        b.push_back(baselineSeconds);
        ratios.push_back(ourSeconds / baselineSeconds);
    }
    return {median(a), median(b), median(ratios)};
}

/// Prints one row and answers whether the ratio is within its limit.
inline bool report(const std::string& what, const Comparison& result, double limit,
    const char* unit = "ms", double scale = 1000)
{
    const bool within = result.ratio <= limit;
    std::printf("%-44s %10.3f %s %10.3f %s   %5.2f  (at most %.2f)  %s\n", what.c_str(),
        result.ours * scale, unit, result.baseline * scale, unit, result.ratio, limit,
        within ? "ok" : "TOO SLOW");
    std::fflush(stdout);
    return within;
}

} // namespace zarn::bench
