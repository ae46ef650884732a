// sim_line_writer_test.cpp - lines for standard error: whole, counted, and never waited for.
#include "base/owners.hpp"
#include "server/base/limits.hpp"
#include "server/base/line_writer.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace
{

using tovrik::line_writer;
using namespace std::chrono_literals;

/// What can be read without waiting.
std::string read_all(int fd)
{
    std::string text;
    char block[65536];
    for (ssize_t count = 0; (count = read(fd, block, sizeof block)) > 0;)
        text.append(block, static_cast<std::size_t>(count));
    return text;
}

/// A pipe with the least room that the system gives.
struct small_pipe {
    unique_fd out;
    unique_fd in;
    small_pipe()
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        out = unique_fd{ends[0]};
        in = unique_fd{ends[1]};
        fcntl(in.get(), F_SETPIPE_SZ, 4096);
        fcntl(out.get(), F_SETFL, O_NONBLOCK);
    }
};

/// Puts a line once in each of `count` seconds.
void put_lines(line_writer& writer, int count, const std::string& text)
{
    for (int i = 0; i < count; ++i)
        writer.put(text, tovrik::line_level::warning, tovrik::time_point{i * 1s + 10s});
}

TEST(line_writer, writes_whole_lines_with_the_programs_name)
{
    small_pipe pipe;
    line_writer writer{pipe.in.get(), "prog"};
    writer.put("one");
    writer.put("t\x1bw\no\xc3\xa9");
    EXPECT_EQ(read_all(pipe.out.get()), "prog: one\nprog: t?w?o\xc3\xa9\n");
    writer.put(std::string(5000, 'x'));
    EXPECT_EQ(read_all(pipe.out.get()), "prog: " + std::string(tovrik::max_line_bytes, 'x') + "\n");
}

TEST(line_writer, waits_for_no_reader_and_tells_what_it_left_out)
{
    small_pipe pipe;
    line_writer writer{pipe.in.get(), "prog"};
    put_lines(writer, 200, std::string(300, 'x'));
    EXPECT_EQ(fcntl(pipe.in.get(), F_GETFL) & O_NONBLOCK, 0) << "others may share the pipe";
    std::string text;
    for (std::string more; !(more = read_all(pipe.out.get())).empty(); writer.flush())
        text += more;
    std::istringstream lines{text};
    int whole = 0;
    int left_out = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line == "prog: " + std::string(300, 'x'))
            ++whole;
        else
            EXPECT_EQ(sscanf(line.c_str(), "prog: %d lines were left out here", &left_out), 1)
                << line;
    }
    EXPECT_GT(whole, 10);
    EXPECT_LT(whole, 100);
    EXPECT_EQ(whole + left_out, 200);
    writer.put("after");
    EXPECT_EQ(read_all(pipe.out.get()), "prog: after\n") << "it was told once";
}

TEST(line_writer, writes_a_bounded_number_of_lines_a_second)
{
    const unique_fd memory{memfd_create("lines", MFD_CLOEXEC)};
    line_writer writer{memory.get(), "p"};
    for (int i = 0; i < tovrik::max_lines_per_second + 7; ++i)
        writer.put("x", tovrik::line_level::warning, tovrik::time_point{10s});
    writer.put("later", tovrik::line_level::warning, tovrik::time_point{11s});
    std::string expected;
    for (int i = 0; i < tovrik::max_lines_per_second; ++i)
        expected += "p: x\n";
    expected += "p: 7 lines were left out here\np: later\n";
    lseek(memory.get(), 0, SEEK_SET);
    EXPECT_EQ(read_all(memory.get()), expected);
}

TEST(line_writer, goes_on_when_a_stopped_terminal_goes_on)
{
    const unique_fd terminal{posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
    ASSERT_TRUE(terminal && grantpt(terminal.get()) == 0 && unlockpt(terminal.get()) == 0);
    const unique_fd line{open(ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_TRUE(line);
    line_writer writer{line.get(), "prog"};
    ASSERT_EQ(tcflow(line.get(), TCOOFF), 0);
    put_lines(writer, 100, std::string(300, 'x'));
    EXPECT_EQ(read_all(terminal.get()), "");
    ASSERT_EQ(tcflow(line.get(), TCOON), 0);
    std::string text;
    for (int tries = 0; tries < 10'000 && text.find("left out here\r\n") == std::string::npos;
         ++tries) {
        writer.flush();
        text += read_all(terminal.get());
    }
    EXPECT_TRUE(text.starts_with("prog: " + std::string(300, 'x') + "\r\n")) << text;
    EXPECT_TRUE(text.ends_with(" lines were left out here\r\n")) << text;
    EXPECT_EQ(fcntl(line.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST(line_writer, survives_a_full_and_a_closed_socket)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const unique_fd in{ends[0]};
    unique_fd out{ends[1]};
    line_writer writer{in.get(), "prog"};
    put_lines(writer, 2000, std::string(900, 'x'));
    out = unique_fd{};
    writer.put("nobody hears this");
    writer.flush();
}

TEST(line_writer, keeps_the_place_in_a_file_that_others_write_to)
{
    std::string path = testing::TempDir() + "line_writer_XXXXXX";
    const unique_fd file{mkstemp(path.data())};
    line_writer writer{file.get(), "prog"};
    ASSERT_EQ(write(file.get(), "first\n", 6), 6);
    writer.put("second");
    ASSERT_EQ(write(file.get(), "third\n", 6), 6);
    lseek(file.get(), 0, SEEK_SET);
    EXPECT_EQ(read_all(file.get()), "first\nprog: second\nthird\n");
    unlink(path.c_str());
}

TEST(line_writer, gives_the_journal_levels_in_place_of_the_name)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    const unique_fd in{ends[0]};
    const unique_fd out{ends[1]};
    struct stat about {
    };
    ASSERT_EQ(fstat(in.get(), &about), 0);
    const std::string stream = std::to_string(about.st_dev) + ":" + std::to_string(about.st_ino);
    for (const auto& [said, expected] :
         {std::pair{stream, "<3>x\n"}, std::pair{"0:" + stream, "prog: x\n"}}) {
        ASSERT_EQ(setenv("JOURNAL_STREAM", said.c_str(), 1), 0);
        line_writer writer{in.get(), "prog"};
        writer.put("x", tovrik::line_level::error);
        EXPECT_EQ(read_all(out.get()), expected);
    }
    unsetenv("JOURNAL_STREAM");
}

} // namespace
