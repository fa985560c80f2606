// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_TRIAL_H
#define KOVASCTL_CONFORMANCE_TRIAL_H

#include <map>
#include <memory>
#include <string>

#include "tools/kovasctl/conformance/kit_options.h"
#include "tools/kovasctl/conformance/listing.h"
#include "tools/kovasctl/conformance/subject.h"

/// What a check works with: the adapter, and the tool that waits for the verdict.
///
/// Threads: any, but for Adapter's first call.
class Trial {
  public:
    Trial(const KitOptions& options, int tool) : m_Options(options), m_Tool(tool) {}

    const KitOptions& Options() const { return m_Options; }

    /// How long to wait for what a sound adapter does at once, and for a notice; the rest of the time
    /// limit is for saying what was seen.
    double Moment() const { return m_Options.timeout / 4; }
    double Patience() const { return m_Options.timeout / 2; }

    /// What is being tried from now on: a crash or a hang is reported with it.
    void Step(const std::string& text) const;

    /// The adapter, loaded at the first call.
    /// @throws NotTried
    Subject& Adapter();

    // The following throw NotTried when the adapter fails: that is for other rules to report.
    Listing Enumerate();
    void Register();
    int Open(const std::string& portName);

    /// Has the tool start a command of the person's, and does not wait for it. Each once at most.
    void StartCommand(const char* name) const;

    /// Waits for the end of a command that was started. One thread at a time.
    /// @return why it failed; empty: it did not
    std::string WaitForCommand(const char* name);

    /// The same with a bound: a command may wait for a notice that is kept from ending.
    void WaitForCommand(const char* name, double seconds);

    /// Unloads the adapter; the next call of Adapter loads it again.
    void Unload();

    /// For when the verdict has been given: un-registers.
    void Leave();

  private:
    bool TakeAnswer();

    const KitOptions& m_Options;
    int m_Tool;
    std::unique_ptr<Subject> m_Adapter;
    std::map<std::string, std::string> m_Ended; // commands, and why they failed
};

constexpr const char* kUnplug = "unplug";
constexpr const char* kPlug = "plug";

/// What is written to ports: harmless to most far ends, and answered by many.
constexpr char kLineEnd[] = {'\r', '\n'};

#endif
