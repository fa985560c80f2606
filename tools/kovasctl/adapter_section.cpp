// SPDX-License-Identifier: MIT
#include "tools/kovasctl/adapter_section.h"

#include <filesystem>
#include <system_error>

#include "tools/kovasctl/adapter_probe.h"
#include "tools/kovasctl/elf_facts.h"

namespace {

constexpr const char* kSubject = "adapter";
constexpr const char* kRebuild =
    "rebuild it: OSAdapt.h declares the seven functions, extern \"C\" and exported";

std::string NamesTried() {
    std::string names;
    for (const std::string& name : AdapterFileNames()) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

void DescribeFile(const std::string& file, Findings& findings) {
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(file, error);
    findings.Good(kSubject, "file " + file + ", " + std::to_string(error ? 0 : size) + " bytes");
    const ElfFacts elf = ReadElfFacts(file);
    if (elf.problem.empty()) {
        findings.Good(kSubject, elf.kind);
    } else {
        findings.Problem(kSubject, elf.problem, "build it for this system: " + elf.wanted);
    }
}

void DescribeFunctions(const AdapterFacts& facts, Findings& findings) {
    for (const AdapterFacts::Function& function : facts.functions) {
        if (function.isFound) {
            findings.Good(kSubject, function.name + " found");
        } else {
            findings.Problem(kSubject, function.name + " missing", kRebuild);
        }
    }
    findings.Good(kSubject, facts.hasSetLine ? "OSADAPT_SetLine found: --line works"
                                             : "OSADAPT_SetLine not there: it has no lines to set");
}

} // namespace

bool ExamineAdapter(const AdapterPlace& adapter, Findings& findings) {
    findings.Good(kSubject, "directory " + adapter.directory + " (" + adapter.origin + ")");
    if (adapter.file.empty()) {
        findings.Problem(kSubject, "there is none of " + NamesTried(),
                         "install or build an adapter, or choose another by --adapter");
        return false;
    }
    DescribeFile(adapter.file, findings);
    const AdapterFacts facts = ProbeAdapter(adapter.file);
    if (!facts.loadError.empty()) {
        findings.Problem(kSubject, "does not load: " + facts.loadError,
                         "ldd -r " + adapter.file + " shows what it misses");
        return false;
    }
    findings.Good(kSubject, "loads");
    DescribeFunctions(facts, findings);
    return facts.IsUsable();
}
