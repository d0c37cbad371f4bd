#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// What may stand at the end of a command text that is being typed.
struct Completion {
    std::size_t begin = 0; ///< where the word starts that is to be replaced; the text's length for a new word
    std::vector<std::string> candidates; ///< words that may stand there, sorted; each begins with what is typed of it
};

/// From the declared verbs and the catalogue: verbs, types, names of objects, keywords that are not given yet, and
/// values where the declaration tells them. Only the last statement of the text counts.
[[nodiscard]] Completion complete_command(std::string_view text);

/// One line of help for what is being typed at the end of a command text: the meaning of the keyword whose value is
/// being typed, else the verb's summary; empty where there is no verb yet.
[[nodiscard]] std::string command_hint(std::string_view text);

/// The longest beginning that all of them share.
[[nodiscard]] std::string common_beginning(const std::vector<std::string>& candidates);

} // namespace lodex
