// SPDX-License-Identifier: MIT
//
// One line, taken as a sentence of a scenario, as that of a port's script, as an order to a running
// scenario, and as the words of a command.
#include <stdexcept>

#include "adapters/virtual/control/control_words.h"
#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/language/event_reader.h"
#include "adapters/virtual/language/event_words.h"
#include "tests/proof/fuzz/fuzz_input.h"
#include "tests/proof/fuzz/scenario_text.h"

namespace {

constexpr size_t kMostShown = 256; // bytes that an action's text has in full

/// Nothing when the reader refuses the text, for a reason that fits in a line.
template <typename Read> auto Accepted(Read read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const std::runtime_error& error) {
        const std::string reason = error.what();
        Demand(!reason.empty() && reason.find('\n') == std::string::npos,
               "a mistake has a reason of one line");
        return std::nullopt;
    }
}

void CheckAction(const Action& action) {
    const bool isShort = action.bytes.size() <= kMostShown;
    if (!isShort) {
        return;
    }
    const std::string text = ActionText(action);
    const auto again = Accepted([&] { return ReadAction(text); });
    Demand(again && IsSame(action, *again), "an action's text is the order for it");
}

void CheckEvent(const std::string& text, const std::string& ownPort) {
    const auto event = Accepted([&] { return ReadEvent(text, ownPort); });
    if (!event) {
        return;
    }
    CheckAction(event->action);
    const std::string written = EventText(*event);
    const auto again = Accepted([&] { return ReadEvent(written); });
    Demand(again && IsSame(*event, *again), "a sentence that leaves nothing out says the same");
}

void CheckWords(const std::string& text) {
    const auto quoted = SplitEventWords(QuoteBytes(text));
    Demand(quoted.size() == 1 && quoted[0].isQuoted && quoted[0].text == text,
           "bytes in quotes are those bytes");
    const auto words = SplitWords(QuoteWord(text));
    Demand(words && *words == std::vector<std::string>{text}, "a word in quotes is that word");
    SplitWords(text);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return 0; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = FuzzInput(data, size).Rest();
    CheckEvent(text, "");
    CheckEvent(text, "own port");
    if (const auto action = Accepted([&] { return ReadAction(text); })) {
        CheckAction(*action);
    }
    CheckWords(text);
    return 0;
}
