// hardening_test.cpp - the program as it is installed is linked and compiled so that a fault in it
// is hard to make use of.
#include "support/command_lines.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using text_lines = std::vector<std::string>;

/// What readelf says of a file, line by line.
text_lines readelf(const std::string& options, const std::string& file)
{
    return command_lines("LC_ALL=C readelf --wide " + options + " '" + file + "'");
}

text_lines with(const text_lines& lines, const std::string& part)
{
    text_lines found;
    for (const std::string& line : lines) {
        if (line.find(part) != std::string::npos)
            found.push_back(line);
    }
    return found;
}

bool says(const text_lines& lines, const std::string& part)
{
    return !with(lines, part).empty();
}

/// The program itself, and the library of which all but its main() comes: the C++ library is linked
/// in, and is guarded in its own way.
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

TEST_F(hardening, program_may_be_loaded_anywhere)
{
    EXPECT_TRUE(says(readelf("--file-header", program), "DYN (Position-Independent Executable"));
    const text_lines dynamic = readelf("--dynamic", program);
    EXPECT_TRUE(says(with(dynamic, "(FLAGS_1)"), "PIE"));
    EXPECT_FALSE(says(dynamic, "TEXTREL"));
}

TEST_F(hardening, tables_of_addresses_are_filled_at_the_start_and_read_only_from_then_on)
{
    EXPECT_TRUE(says(readelf("--segments", program), "GNU_RELRO"));
    const text_lines dynamic = readelf("--dynamic", program);
    EXPECT_TRUE(says(with(dynamic, "(FLAGS)"), "BIND_NOW"));
    EXPECT_TRUE(says(with(dynamic, "(FLAGS_1)"), "NOW"));
}

TEST_F(hardening, no_memory_is_both_writable_and_executable)
{
    const text_lines segments = readelf("--segments", program);
    EXPECT_EQ(with(segments, "GNU_STACK").size(), 1U);
    EXPECT_GE(with(segments, "LOAD").size(), 2U);
    for (const char* kind : {"LOAD", "GNU_STACK"})
        for (const std::string& segment : with(segments, kind))
            EXPECT_EQ(segment.find("RWE"), std::string::npos) << segment;
}

TEST_F(hardening, libraries_come_from_the_systems_folders_only)
{
    const text_lines dynamic = readelf("--dynamic", program);
    EXPECT_TRUE(says(dynamic, "(NEEDED)"));
    EXPECT_FALSE(says(dynamic, "(RPATH)"));
    EXPECT_FALSE(says(dynamic, "(RUNPATH)"));
}

TEST_F(hardening, an_overrun_of_the_stack_ends_the_program)
{
    const std::string guard = " __stack_chk_fail";
    EXPECT_TRUE(says(readelf("--dyn-syms", program), guard));
    EXPECT_TRUE(says(readelf("--symbols", own_code), guard));
}

TEST_F(hardening, an_overrun_of_a_buffer_of_known_size_ends_the_program)
{
    const text_lines used = readelf("--dyn-syms", program);
    const text_lines own = readelf("--symbols", own_code);
    for (const char* checked : {" __vsnprintf_chk", " __snprintf_chk", " __fprintf_chk"}) {
        EXPECT_TRUE(says(used, checked)) << checked;
        EXPECT_TRUE(says(own, checked)) << checked;
    }
}

TEST_F(hardening, every_object_marks_where_indirect_jumps_may_lead)
{
#if defined(__x86_64__)
    // Of the program as a whole nothing can be said: the system's own start files lack the mark.
    const text_lines notes = readelf("--notes", own_code);
    EXPECT_EQ(with(notes, "IBT, SHSTK").size(), with(notes, "File: ").size());
    EXPECT_GE(with(notes, "File: ").size(), 2U);
#else
    GTEST_SKIP() << "only marked on x86-64";
#endif
}

} // namespace
