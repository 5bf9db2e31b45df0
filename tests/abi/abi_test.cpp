// The binary interface of libqxmath.so: exactly the listed names are
// exported, internal helpers are not, host services are imported rather than
// defined, the SONAME carries the major version and the library does not
// depend on the reference host.
#include <dlfcn.h>
#include <elf.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qxsys/qxsys.h>

namespace
{

std::vector<std::string> read_names(const std::string &path)
{
    std::ifstream in(path);
    EXPECT_TRUE(in) << path;
    std::vector<std::string> names;
    std::string line;
    while (std::getline(in, line)) {
        line = line.substr(0, line.find('#'));
        std::istringstream words(line);
        std::string name;
        if (words >> name) names.push_back(name);
    }
    return names;
}

struct DynamicSymbols {
    std::set<std::string> defined;   // global or weak, default/protected visibility
    std::set<std::string> undefined; // imports
    std::string soname;
    std::vector<std::string> needed;
};

// Reads the dynamic symbol table and dynamic section of a 64-bit ELF file.
DynamicSymbols read_elf(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::string image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    DynamicSymbols out;
    if (image.size() < sizeof(Elf64_Ehdr)) return out;
    const char *base = image.data();
    Elf64_Ehdr eh;
    std::memcpy(&eh, base, sizeof eh);
    if (std::memcmp(eh.e_ident, ELFMAG, SELFMAG) != 0 || eh.e_ident[EI_CLASS] != ELFCLASS64)
        return out;
    std::vector<Elf64_Shdr> sections(eh.e_shnum);
    for (unsigned i = 0; i < eh.e_shnum; ++i)
        std::memcpy(&sections[i], base + eh.e_shoff + i * eh.e_shentsize, sizeof(Elf64_Shdr));
    for (const Elf64_Shdr &sh : sections) {
        if (sh.sh_type == SHT_DYNSYM) {
            const char *strtab = base + sections[sh.sh_link].sh_offset;
            for (std::size_t off = sh.sh_entsize; off < sh.sh_size; off += sh.sh_entsize) {
                Elf64_Sym sym;
                std::memcpy(&sym, base + sh.sh_offset + off, sizeof sym);
                const std::string name = strtab + sym.st_name;
                const int bind = ELF64_ST_BIND(sym.st_info);
                if (bind != STB_GLOBAL && bind != STB_WEAK) continue;
                if (sym.st_shndx == SHN_UNDEF)
                    out.undefined.insert(name);
                else if (ELF64_ST_VISIBILITY(sym.st_other) <= STV_PROTECTED &&
                         ELF64_ST_VISIBILITY(sym.st_other) != STV_INTERNAL &&
                         ELF64_ST_VISIBILITY(sym.st_other) != STV_HIDDEN)
                    out.defined.insert(name);
            }
        } else if (sh.sh_type == SHT_DYNAMIC) {
            const char *strtab = base + sections[sh.sh_link].sh_offset;
            for (std::size_t off = 0; off + sizeof(Elf64_Dyn) <= sh.sh_size;
                 off += sizeof(Elf64_Dyn)) {
                Elf64_Dyn dyn;
                std::memcpy(&dyn, base + sh.sh_offset + off, sizeof dyn);
                if (dyn.d_tag == DT_SONAME) out.soname = strtab + dyn.d_un.d_val;
                if (dyn.d_tag == DT_NEEDED) out.needed.push_back(strtab + dyn.d_un.d_val);
            }
        }
    }
    return out;
}

} // namespace

TEST(Abi, ExportsExactlyTheListedNames)
{
    const DynamicSymbols syms = read_elf(QX_LIBRARY_PATH);
    ASSERT_FALSE(syms.defined.empty()) << "no dynamic symbols read from " << QX_LIBRARY_PATH;
    const std::vector<std::string> listed = read_names(QX_EXPORTS_FILE);
    const std::set<std::string> expected(listed.begin(), listed.end());
    EXPECT_EQ(expected.size(), listed.size()) << "a name is listed twice";
    for (const std::string &name : expected)
        EXPECT_TRUE(syms.defined.count(name)) << "not exported: " << name;
    for (const std::string &name : syms.defined)
        EXPECT_TRUE(expected.count(name)) << "stray export: " << name;
}

// Every declaration marked QXMATH_API in the public headers is listed, so
// that no declared function is silently hidden by the linker.
TEST(Abi, EveryDeclaredNameIsListed)
{
    const std::vector<std::string> listed = read_names(QX_EXPORTS_FILE);
    const std::set<std::string> exported(listed.begin(), listed.end());
    const std::regex comments(R"(/\*[\s\S]*?\*/|//[^\n]*)");
    const std::regex function(R"(([A-Za-z_][A-Za-z0-9_]*)\s*\()");
    const std::regex data(R"(([A-Za-z_][A-Za-z0-9_]*)\s*(\[[^\]]*\])?\s*$)");
    int declarations = 0;
    for (const auto &entry : std::filesystem::directory_iterator(QX_INCLUDE_DIR)) {
        std::ifstream in(entry.path());
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        text = std::regex_replace(text, comments, " ");
        for (size_t at = text.find("QXMATH_API"); at != std::string::npos;
             at = text.find("QXMATH_API", at + 1)) {
            const size_t end = text.find(';', at);
            const std::string decl = text.substr(at, end - at);
            if (decl.rfind("QXMATH_API\n", 0) == 0 || decl.find("#define") != std::string::npos)
                continue; // the macro's own definition
            std::smatch m;
            if (!std::regex_search(decl, m, function) && !std::regex_search(decl, m, data)) {
                ADD_FAILURE() << "cannot read declaration: " << decl;
                continue;
            }
            ++declarations;
            EXPECT_TRUE(exported.count(m[1])) << entry.path().filename() << " declares " << m[1]
                                              << " but the export list does not name it";
        }
    }
    EXPECT_EQ(size_t(declarations), exported.size());
}

TEST(Abi, HostServicesAreImportedNotDefined)
{
    const DynamicSymbols syms = read_elf(QX_LIBRARY_PATH);
    for (const std::string &name : read_names(QX_NAMES_DIR "/host_names.txt"))
        EXPECT_FALSE(syms.defined.count(name)) << "defines a host service: " << name;
    // The session code reports and notifies through the host.
    for (const char *name : {"MACH__checking_level", "ERROR_internal",
                             "QX_REASON_ask_reason_number", "CALLBACK_call_list"})
        EXPECT_TRUE(syms.undefined.count(name)) << "does not import " << name;
}

TEST(Abi, SonameAndDependencies)
{
    const DynamicSymbols syms = read_elf(QX_LIBRARY_PATH);
    EXPECT_EQ(syms.soname, "libqxmath.so.1");
    for (const std::string &lib : syms.needed)
        EXPECT_EQ(lib.find("qxsys"), std::string::npos) << "bound to the reference host: " << lib;
}

TEST(Abi, NamesResolveThroughTheLoader)
{
    qxsys_reset(); // the host services are loaded, so the library can bind to them
    void *lib = dlopen(QX_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    for (const std::string &name : read_names(QX_EXPORTS_FILE))
        EXPECT_NE(dlsym(lib, name.c_str()), nullptr) << "does not resolve: " << name;
    for (const std::string &name : read_names(QX_NAMES_DIR "/internal_names.txt"))
        EXPECT_EQ(dlsym(lib, name.c_str()), nullptr) << "internal name resolves: " << name;
    // A fresh copy of the session starts zeroed.
    using ask_fn = double (*)(void);
    auto ask = reinterpret_cast<ask_fn>(dlsym(lib, "EQ_ask_number_tolerance"));
    ASSERT_NE(ask, nullptr);
    EXPECT_EQ(ask(), 0.0);
    dlclose(lib);
}
