// faults.cpp - see faults.hpp.
#include "support/faults.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

void fill(fault_slot& slot, const fault& wanted)
{
    slot.call = static_cast<int>(faulty_call::none);
    slot.skipped = wanted.skipped;
    slot.failing = wanted.failing;
    slot.error = wanted.error;
    slot.hits = 0;
    const std::size_t length = wanted.name.copy(slot.name, sizeof slot.name - 1);
    slot.name[length] = '\0';
    slot.call = static_cast<int>(wanted.call);
}

bool is_free(const fault_slot& slot)
{
    return slot.call == static_cast<int>(faulty_call::none);
}

} // namespace

void fault_set(fault_layout& layout, const fault& wanted)
{
    for (fault_slot& slot : layout.faults)
        fill(slot, {});
    fill(layout.faults[0], wanted);
}

void fault_add(fault_layout& layout, const fault& wanted)
{
    fault_slot* const slot = std::ranges::find_if(layout.faults, is_free);
    if (slot == std::end(layout.faults)) {
        std::fputs("too many faults\n", stderr);
        std::abort();
    }
    fill(*slot, wanted);
}

int fault_hits(const fault_layout& layout)
{
    int hits = 0;
    for (const fault_slot& slot : layout.faults)
        hits += slot.hits;
    return hits;
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

void program_faults::add(const fault& wanted)
{
    fault_add(*shared, wanted);
}

void program_faults::send_before_calls(int signal_number, int step, int every)
{
    shared->signal_at = 0;
    shared->signal_number = signal_number;
    shared->signal_every = every;
    shared->signals = 0;
    shared->steps = 0;
    shared->signal_at = signal_number == 0 ? 0 : step;
}

int program_faults::signals() const
{
    return shared->signals;
}

void program_faults::kill_at(int step)
{
    shared->steps = 0;
    shared->kill_at = step;
}

int program_faults::hits() const
{
    return fault_hits(*shared);
}

std::int64_t program_faults::wait_limit_us() const
{
    return shared->limit_us;
}
