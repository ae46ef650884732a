// faults.cpp - see faults.hpp.
#include "support/faults.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/mman.h>
#include <unistd.h>

void fault_set(fault_layout& layout, const fault& wanted)
{
    layout.call = static_cast<int>(faulty_call::none);
    layout.skipped = wanted.skipped;
    layout.failing = wanted.failing;
    layout.error = wanted.error;
    layout.hits = 0;
    const std::size_t length = wanted.name.copy(layout.name, sizeof layout.name - 1);
    layout.name[length] = '\0';
    layout.call = static_cast<int>(wanted.call);
}

program_faults::program_faults()
{
    path = std::filesystem::temp_directory_path() / "ncursesclient-faults-XXXXXX";
    const int fd = mkstemp(path.data());
    void* mapped = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, sizeof(fault_layout)) == 0)
        mapped = mmap(nullptr, sizeof(fault_layout), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (mapped == MAP_FAILED) {
        std::perror("cannot make faults");
        std::abort();
    }
    close(fd);
    shared = static_cast<fault_layout*>(mapped);
}

program_faults::~program_faults()
{
    munmap(shared, sizeof(fault_layout));
    unlink(path.c_str());
}

std::map<std::string, std::string> program_faults::environment(const std::string& preloads) const
{
    return {{"LD_PRELOAD", FAULT_PRELOAD ":" + preloads}, {fault_file_variable, path}};
}

void program_faults::set(const fault& wanted)
{
    fault_set(*shared, wanted);
}

void program_faults::kill_at(int step)
{
    shared->steps = 0;
    shared->kill_at = step;
}

int program_faults::hits() const
{
    return shared->hits;
}

long program_faults::wait_limit_us() const
{
    return shared->limit_us;
}
