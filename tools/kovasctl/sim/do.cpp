// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/do.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/program_place.h"
#include "tools/kovasctl/sim/program.h"
#include "tools/kovasctl/streams.h"
#include "tools/kovasctl/unique_fd.h"

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
    if (said.empty()) {
        throw WrongUse("--do needs a COMMAND");
    }
    words.insert(words.end(), said.begin(), said.end());
    return words;
}

/// Standard error goes to memory, for as long as this lives.
class KeptErrors {
  public:
    KeptErrors()
        : m_Kept(memfd_create("errors", MFD_CLOEXEC)),
          m_Before(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
        if (!m_Kept.IsOpen() || !m_Before.IsOpen()) {
            throw Failure(std::string("errors cannot be kept: ") + std::strerror(errno));
        }
        dup2(m_Kept.Get(), STDERR_FILENO);
    }
    ~KeptErrors() { dup2(m_Before.Get(), STDERR_FILENO); }
    KeptErrors(const KeptErrors&) = delete;
    KeptErrors& operator=(const KeptErrors&) = delete;

    std::string Text() const {
        std::string text;
        char buffer[1024];
        ssize_t count = 0;
        while ((count = pread(m_Kept.Get(), buffer, sizeof buffer,
                              static_cast<off_t>(text.size()))) > 0) {
            text.append(buffer, static_cast<size_t>(count));
        }
        return text;
    }

  private:
    UniqueFd m_Kept;
    UniqueFd m_Before;
};

int RunQuietly(const std::vector<std::string>& words, std::string& errors) {
    const KeptErrors kept;
    const int status = RunProgram(words, ".", std::function<bool()>());
    errors = kept.Text();
    return status;
}

std::string ByOurName(const std::string& errors) {
    const std::string theirs = std::string(kProgram) + ": ";
    const bool isNamed = errors.compare(0, theirs.size(), theirs) == 0;
    return isNamed ? "kovasctl: " + errors.substr(theirs.size()) : errors;
}

} // namespace

int DoInSimulation(const std::vector<std::string>& options,
                   const std::vector<std::string>& sentence) {
    const std::string program = ProgramDirectory() + "/" + kProgram;
    const std::vector<std::string> words = CommandLine(program, options, sentence);
    std::string errors;
    const int status = RunQuietly(words, errors);
    WriteMessage(ByOurName(errors));
    return status;
}
