// backtrace_names.cpp - see backtrace_names.hpp.
#include "faults/allocation/backtrace_names.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <link.h>
#include <map>
#include <memory>
#include <vector>

namespace
{

struct symbol {
    std::uintptr_t begin;
    std::size_t size;
    std::string name;
};
using symbol_table = std::vector<symbol>;

template <typename record> record read_record(const std::vector<char>& bytes, std::size_t place)
{
    record found;
    std::memcpy(&found, bytes.data() + place, sizeof found);
    return found;
}

void read_section(const std::vector<char>& bytes, const Elf64_Shdr& section,
                  const Elf64_Shdr& names, symbol_table& table)
{
    for (std::size_t at = 0; at + sizeof(Elf64_Sym) <= section.sh_size; at += sizeof(Elf64_Sym)) {
        const auto entry = read_record<Elf64_Sym>(bytes, section.sh_offset + at);
        if (ELF64_ST_TYPE(entry.st_info) == STT_FUNC && entry.st_shndx != SHN_UNDEF)
            table.push_back(
                {entry.st_value, entry.st_size, bytes.data() + names.sh_offset + entry.st_name});
    }
}

/// All functions that a file names, including those that only the file itself may call.
symbol_table read_symbols(const char* file_name)
{
    std::ifstream file{file_name, std::ios::binary};
    const std::vector<char> bytes{std::istreambuf_iterator<char>{file}, {}};
    symbol_table table;
    if (bytes.size() < sizeof(Elf64_Ehdr))
        return table;
    const auto header = read_record<Elf64_Ehdr>(bytes, 0);
    const auto section = [&](std::size_t number) {
        return read_record<Elf64_Shdr>(bytes, header.e_shoff + number * header.e_shentsize);
    };
    for (std::size_t number = 0; number < header.e_shnum; ++number) {
        const Elf64_Shdr found = section(number);
        if (found.sh_type == SHT_SYMTAB || found.sh_type == SHT_DYNSYM)
            read_section(bytes, found, section(found.sh_link), table);
    }
    return table;
}

const symbol_table& find_symbols(const char* file_name)
{
    static std::map<std::string, symbol_table> tables;
    const auto [place, is_new] = tables.try_emplace(file_name);
    if (is_new)
        place->second = read_symbols(file_name);
    return place->second;
}

std::string strip_symbol(const std::string& symbol_name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable{
        abi::__cxa_demangle(symbol_name.c_str(), nullptr, nullptr, &status), &std::free};
    std::string name = readable ? readable.get() : symbol_name;
    constexpr std::string_view hidden = "(anonymous namespace)::";
    for (std::size_t at; (at = name.find(hidden)) != std::string::npos;)
        name.erase(at, hidden.size());
    return name.substr(0, name.find('('));
}

frame_name find_name(std::uintptr_t address)
{
    Dl_info info = {};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(address), &info, reinterpret_cast<void**>(&map),
                RTLD_DL_LINKMAP) == 0)
        return {};
    const bool is_program = map->l_name[0] == '\0';
    const symbol_table& table = find_symbols(is_program ? "/proc/self/exe" : map->l_name);
    const std::uintptr_t offset = address - map->l_addr;
    const auto found = std::find_if(table.begin(), table.end(), [offset](const symbol& function) {
        return function.begin <= offset && offset < function.begin + function.size;
    });
    const std::string file = info.dli_fname;
    return {found != table.end() ? strip_symbol(found->name) : "",
            file.substr(file.rfind('/') + 1)};
}

} // namespace

const frame_name& frame_name_of(const void* return_address)
{
    static std::map<std::uintptr_t, frame_name> known;
    // A call may be the last instruction of its function.
    const auto address = reinterpret_cast<std::uintptr_t>(return_address) - 1;
    const auto [place, is_new] = known.try_emplace(address);
    if (is_new)
        place->second = find_name(address);
    return place->second;
}
