// What the library defines for the outside, read from its file.
#include <elf.h>
#include <fstream>
#include <iterator>
#include <link.h>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "library.h"

namespace {

std::vector<char> fileOf(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>());
}

template <typename Record>
const Record* at(const std::vector<char>& file, size_t offset, size_t count = 1)
{
    if (offset > file.size() || count > (file.size() - offset) / sizeof(Record)) {
        ADD_FAILURE() << "the file ends before " << offset;
        return nullptr;
    }
    return reinterpret_cast<const Record*>(file.data() + offset);
}

// Name and kind (STT_FUNC, STT_OBJECT...) of every symbol that the dynamic symbol table defines:
// what "nm -D --defined-only" lists.
std::map<std::string, int> definedSymbols(const std::vector<char>& file)
{
    std::map<std::string, int> defined;
    const ElfW(Ehdr)* const header = at<ElfW(Ehdr)>(file, 0);
    if (header == nullptr || std::string(file.data(), SELFMAG) != ELFMAG) {
        return defined;
    }
    const ElfW(Shdr)* const sections = at<ElfW(Shdr)>(file, header->e_shoff, header->e_shnum);
    for (int i = 0; sections != nullptr && i < header->e_shnum; ++i) {
        if (sections[i].sh_type != SHT_DYNSYM) {
            continue;
        }
        const size_t count = sections[i].sh_size / sizeof(ElfW(Sym));
        const ElfW(Sym)* const symbols = at<ElfW(Sym)>(file, sections[i].sh_offset, count);
        const char* const names = at<char>(file, sections[sections[i].sh_link].sh_offset);
        for (size_t k = 1; symbols != nullptr && names != nullptr && k < count; ++k) {
            // Local ones are sections, which the linker lists for some processors.
            const bool local = ELF32_ST_BIND(symbols[k].st_info) == STB_LOCAL;
            if (symbols[k].st_shndx != SHN_UNDEF && !local) {
                defined[names + symbols[k].st_name] = ELF32_ST_TYPE(symbols[k].st_info);
            }
        }
    }
    return defined;
}

const char* const exportedFunctions[] = {
    "intf_getVersion",
    "intf_getProtocolType",
    "intf_getDriverParameter",
    "intf_getDriverPropertyPage",
    "intf_SetDriverPropertyPage",
    "intf_setAddrValueChangeCallBack",
    "intf_initProperty",
    "intf_checkAddrValidity",
    "intf_checkAddr",
    "intf_getRegListByType",
    "intf_getRegDiscription",
    "intf_multiCopy",
    "intf_addrMerge",
    "intf_addConditionRead",
    "intf_setRcpAddress",
    "intf_getSendFrame",
    "intf_dealRcvFrame",
    "intf_getData",
    "intf_setData",
};

TEST(DynamicSymbols, AreTheNineteenFunctionsAndTheDriverAndNothingElse)
{
    std::map<std::string, int> expected;
    for (const char* name : exportedFunctions) {
        expected[name] = STT_FUNC;
    }
    ASSERT_EQ(expected.size(), 19u);
    expected["driver"] = STT_OBJECT;
    EXPECT_EQ(definedSymbols(fileOf(Library::path())), expected);
}

TEST(DynamicSymbols, AreFoundByTheLoader)
{
    const Library library;
    for (const char* name : exportedFunctions) {
        EXPECT_NE(library.function<void()>(name), nullptr) << name;
    }
    EXPECT_EQ(library.driver().regNames.size(), 11);
}

} // namespace
