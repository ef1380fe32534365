#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <doctest/doctest.h>

namespace orvel::tests {

/// The first difference of two lists of texts, for the message of a failed check.
inline std::string FirstDifference(const std::vector<std::string>& actual, const std::vector<std::string>& expected)
{
    const auto same = std::ranges::mismatch(actual, expected);
    const auto text = [](const auto& list, auto at) { return at == list.end() ? "nothing" : '"' + *at + '"'; };
    return "entry " + std::to_string(same.in1 - actual.begin()) + " of " + std::to_string(actual.size()) + " is\n    " +
           text(actual, same.in1) + "\n  and should be, of " + std::to_string(expected.size()) + ",\n    " +
           text(expected, same.in2);
}

} // namespace orvel::tests

namespace doctest::detail {

/// doctest itself prints "{?} == {?}".
template <>
inline String stringifyBinaryExpr(const std::vector<std::string>& actual, const char*,
                                  const std::vector<std::string>& expected)
{
    return orvel::tests::FirstDifference(actual, expected).c_str();
}

} // namespace doctest::detail
