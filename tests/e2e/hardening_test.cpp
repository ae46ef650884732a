// hardening_test.cpp - the installed program is compiled and linked so that a fault in it is hard
// to exploit.
#include "support/command_lines.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using text_lines = std::vector<std::string>;

/// What readelf prints about a file, line by line.
text_lines run_readelf(const std::string& options, const std::string& file)
{
    return command_lines("LC_ALL=C readelf --wide " + options + " '" + file + "'");
}

text_lines find_lines(const text_lines& lines, const std::string& part)
{
    text_lines found;
    for (const std::string& line : lines) {
        if (line.find(part) != std::string::npos)
            found.push_back(line);
    }
    return found;
}

bool has_line(const text_lines& lines, const std::string& part)
{
    return !find_lines(lines, part).empty();
}

/// The program itself, and the library that holds all of it but main(). The C++ library is linked
/// in, and is hardened in its own way.
class hardening : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!CLIENT_IS_HARDENED)
            GTEST_SKIP() << "only the release preset builds a hardened program";
    }

    const std::string program = CLIENT_BINARY;
    const std::string own_code = CLIENT_CORE;
};

TEST_F(hardening, the_program_may_be_loaded_anywhere)
{
    EXPECT_TRUE(
        has_line(run_readelf("--file-header", program), "DYN (Position-Independent Executable"));
    const text_lines dynamic = run_readelf("--dynamic", program);
    EXPECT_TRUE(has_line(find_lines(dynamic, "(FLAGS_1)"), "PIE"));
    EXPECT_FALSE(has_line(dynamic, "TEXTREL"));
}

TEST_F(hardening, address_tables_are_filled_at_the_start_and_then_read_only)
{
    EXPECT_TRUE(has_line(run_readelf("--segments", program), "GNU_RELRO"));
    const text_lines dynamic = run_readelf("--dynamic", program);
    EXPECT_TRUE(has_line(find_lines(dynamic, "(FLAGS)"), "BIND_NOW"));
    EXPECT_TRUE(has_line(find_lines(dynamic, "(FLAGS_1)"), "NOW"));
}

TEST_F(hardening, no_memory_is_both_writable_and_executable)
{
    const text_lines segments = run_readelf("--segments", program);
    EXPECT_EQ(find_lines(segments, "GNU_STACK").size(), 1U);
    EXPECT_GE(find_lines(segments, "LOAD").size(), 2U);
    for (const char* kind : {"LOAD", "GNU_STACK"})
        for (const std::string& segment : find_lines(segments, kind))
            EXPECT_EQ(segment.find("RWE"), std::string::npos) << segment;
}

TEST_F(hardening, libraries_come_from_the_systems_folders_only)
{
    const text_lines dynamic = run_readelf("--dynamic", program);
    EXPECT_TRUE(has_line(dynamic, "(NEEDED)"));
    EXPECT_FALSE(has_line(dynamic, "(RPATH)"));
    EXPECT_FALSE(has_line(dynamic, "(RUNPATH)"));
}

TEST_F(hardening, an_overrun_of_the_stack_ends_the_program)
{
    const std::string guard = " __stack_chk_fail";
    EXPECT_TRUE(has_line(run_readelf("--dyn-syms", program), guard));
    EXPECT_TRUE(has_line(run_readelf("--symbols", own_code), guard));
}

TEST_F(hardening, an_overrun_of_a_buffer_of_known_size_ends_the_program)
{
    const text_lines used = run_readelf("--dyn-syms", program);
    const text_lines own = run_readelf("--symbols", own_code);
    std::vector<std::string> calls = {" __vsnprintf_chk"};
#ifndef __clang__ // for which glibc 2.36 checks no calls with any number of arguments
    calls.insert(calls.end(), {" __snprintf_chk", " __fprintf_chk"});
#endif
    for (const std::string& checked : calls) {
        EXPECT_TRUE(has_line(used, checked)) << checked;
        EXPECT_TRUE(has_line(own, checked)) << checked;
    }
}

TEST_F(hardening, every_object_marks_where_indirect_jumps_may_lead)
{
#if defined(__x86_64__)
    // This cannot be tested on the whole program: the system's own start files lack the mark.
    const text_lines notes = run_readelf("--notes", own_code);
    EXPECT_EQ(find_lines(notes, "IBT, SHSTK").size(), find_lines(notes, "File: ").size());
    EXPECT_GE(find_lines(notes, "File: ").size(), 2U);
#else
    GTEST_SKIP() << "only marked on x86-64";
#endif
}

} // namespace
