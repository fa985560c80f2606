// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/do.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/program_place.h"
#include "tools/kovasctl/sim/program.h"
#include "tools/kovasctl/streams.h"

namespace {

constexpr const char* kProgram = "kovasmgr-virtual";
constexpr const char* kBlanks = " \t";

// Up to the closing quote; a backslash stays, because it means something to the simulation, and so
// does what follows it.
std::string Quoted(const std::string& text, size_t& at) {
    std::string word;
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        word += text[at];
        if (text[at] == '\\' && at + 1 < text.size()) {
            word += text[++at];
        }
    }
    if (at++ >= text.size()) {
        throw WrongUse("a quote is not closed in '" + text + "'");
    }
    return word;
}

std::string Plain(const std::string& text, size_t& at) {
    const size_t start = at;
    at = std::min(text.find_first_of(kBlanks, at), text.size());
    return text.substr(start, at - start);
}

std::vector<std::string> Words(const std::string& text) {
    std::vector<std::string> words;
    size_t at = 0;
    while ((at = text.find_first_not_of(kBlanks, at)) != std::string::npos) {
        words.push_back(text[at] == '"' ? Quoted(text, at) : Plain(text, at));
    }
    return words;
}

std::vector<std::string> CommandLine(const std::string& program,
                                     const std::vector<std::string>& options,
                                     const std::vector<std::string>& sentence) {
    std::vector<std::string> words{program};
    words.insert(words.end(), options.begin(), options.end());
    const auto said = sentence.size() == 1 ? Words(sentence.front()) : sentence;
    words.insert(words.end(), said.begin(), said.end());
    return words;
}

} // namespace

void DoInSimulation(const std::vector<std::string>& options,
                    const std::vector<std::string>& sentence) {
    const std::string program = ProgramDirectory() + "/" + kProgram;
    std::vector<std::string> words = CommandLine(program, options, sentence);
    const std::vector<char*> pointers = ArgumentPointers(words);
    signal(SIGPIPE, SIG_DFL);
    if (DataDescriptor() >= 0) {
        dup2(DataDescriptor(), STDOUT_FILENO);
    }
    execv(program.c_str(), pointers.data());
    throw Failure(program + " cannot be started: " + std::strerror(errno));
}
