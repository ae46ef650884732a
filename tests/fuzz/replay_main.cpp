// replay_main.cpp - runs one fuzz target on kept inputs, for builds without a fuzzer.
//
// Each argument is a file, or a folder of which all files are taken. A finding ends the program.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

using paths = std::vector<std::filesystem::path>;

/// Absolute paths: targets change to folders of their own.
paths collect_files(const std::filesystem::path& name)
{
    const std::filesystem::path place = std::filesystem::absolute(name);
    if (!std::filesystem::is_directory(place))
        return {place};
    paths files;
    for (const auto& entry : std::filesystem::directory_iterator{place})
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path& path)
{
    std::ifstream file{path, std::ios::binary};
    const std::vector<char> bytes{std::istreambuf_iterator<char>{file}, {}};
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    // Printed before it runs: nothing can be printed after a finding.
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

} // namespace

int main(int count, char** arguments)
{
    paths all;
    for (int index = 1; index < count; ++index) {
        const paths files = collect_files(arguments[index]);
        all.insert(all.end(), files.begin(), files.end());
    }
    if (!std::all_of(all.begin(), all.end(), replay))
        return EXIT_FAILURE;
    std::printf("%zu inputs replayed\n", all.size());
    return all.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
