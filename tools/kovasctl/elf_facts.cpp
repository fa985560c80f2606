// SPDX-License-Identifier: MIT
#include "tools/kovasctl/elf_facts.h"

#include <elf.h>

#include <cstring>
#include <fstream>

namespace {

// The members used here stand at the same offsets in files of 32 and of 64 bits.
struct Header {
    Elf32_Ehdr fields{};
    bool isElf = false;
};

Header ReadHeader(const std::string& file) {
    Header header;
    std::ifstream stream(file, std::ios::binary);
    stream.read(reinterpret_cast<char*>(&header.fields), sizeof header.fields);
    header.isElf = stream.gcount() == static_cast<std::streamsize>(sizeof header.fields) &&
                   std::memcmp(header.fields.e_ident, ELFMAG, SELFMAG) == 0;
    return header;
}

std::string MachineName(unsigned machine) {
    switch (machine) {
    case EM_X86_64:
        return "x86-64";
    case EM_386:
        return "x86";
    case EM_AARCH64:
        return "arm64";
    case EM_ARM:
        return "arm";
    case EM_RISCV:
        return "risc-v";
    case EM_PPC64:
        return "ppc64";
    case EM_S390:
        return "s390";
    default:
        return "machine " + std::to_string(machine);
    }
}

std::string KindOf(const Header& header, bool isLibrary) {
    const bool isWide = header.fields.e_ident[EI_CLASS] == ELFCLASS64;
    return std::string("ELF ") + (isWide ? "64" : "32") + "-bit " +
           (isLibrary ? "shared object" : "file that is no shared object") + ", " +
           MachineName(header.fields.e_machine);
}

} // namespace

ElfFacts ReadElfFacts(const std::string& file) {
    const Header own = ReadHeader("/proc/self/exe");
    const Header header = ReadHeader(file);
    ElfFacts facts;
    facts.wanted = KindOf(own, true);
    if (!header.isElf) {
        facts.problem = "it is not a library (no ELF file)";
        return facts;
    }
    facts.kind = KindOf(header, header.fields.e_type == ET_DYN);
    facts.problem = facts.kind == facts.wanted ? "" : "it is of another kind: " + facts.kind;
    return facts;
}
