#pragma once

#include <doctest/doctest.h>

#include "model/Names.h"

namespace orvel::shared::inventory {

/// The text of an answer in the output of a failing test.
inline doctest::String toString(const Answer& answer)
{
    std::string text = StatusText(answer.status);
    if (const auto* reason = ReasonText(answer.reason)) {
        text += std::string(" (") + reason + ")";
    }
    if (const auto number = NumberOf(answer)) {
        text += " " + std::to_string(*number);
    }
    if (const auto* flag = std::get_if<bool>(&answer.data)) {
        text += *flag ? " true" : " false";
    }
    text += " " + TextOf(answer) + " code " + std::to_string(answer.code);
    return text.c_str();
}

} // namespace orvel::shared::inventory
