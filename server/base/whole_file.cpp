// whole_file.cpp - see whole_file.hpp.
#include "server/base/whole_file.hpp"

#include "base/owners.hpp"
#include "server/base/system_text.hpp"

namespace tovrik
{

whole_file read_whole_file(const std::string& path, std::size_t limit)
{
    const unique_file file{std::fopen(path.c_str(), "re")};
    return file ? read_whole_stream(file.get(), path, limit) : whole_file{{}, system_text(path)};
}

whole_file read_whole_stream(std::FILE* stream, const std::string& name, std::size_t limit)
{
    whole_file result;
    char block[65536];
    while (const std::size_t count = std::fread(block, 1, sizeof block, stream)) {
        result.text.append(block, count);
        if (result.text.size() > limit)
            return {{}, name + ": larger than " + std::to_string(limit) + " bytes"};
    }
    return std::ferror(stream) != 0 ? whole_file{{}, system_text(name)} : result;
}

} // namespace tovrik
