// sim_program.hpp - a run of tovriksim or tovrikd, for the tests of the programs.
#pragma once

#include "support/emulator.hpp"
#include "support/loopback.hpp"
#include "support/patience.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// One run of the program. What it prints is read here, what it complains of too.
class sim_program
{
public:
    /// `locale` is what LC_ALL says; none: the tests' own. What is complained of goes to
    /// `errors_to`; -1: it is read here. The standard input is `input_from`; -1: the tests' own.
    /// `binary` is another program to run.
    explicit sim_program(std::vector<std::string> options, const char* locale = nullptr,
                         int errors_to = -1, int input_from = -1,
                         const char* binary = TOVRIKSIM_BINARY)
    {
        int out[2] = {-1, -1};
        int errors[2] = {-1, -1};
        EXPECT_EQ(pipe2(out, O_CLOEXEC), 0);
        EXPECT_EQ(pipe2(errors, O_CLOEXEC), 0);
        options.insert(options.begin(), binary);
        emulator_add(options);
        std::vector<char*> arguments;
        arguments.reserve(options.size() + 1);
        for (std::string& option : options)
            arguments.push_back(option.data());
        arguments.push_back(nullptr);
        pid = fork();
        if (pid == 0) {
            if (locale != nullptr)
                setenv("LC_ALL", locale, 1);
            if (input_from >= 0)
                dup2(input_from, STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            dup2(errors_to < 0 ? errors[1] : errors_to, STDERR_FILENO);
            execvp(arguments[0], arguments.data());
            _exit(127);
        }
        close(out[1]);
        close(errors[1]);
        out_fd = out[0];
        error_fd = errors[0];
    }
    sim_program(const sim_program&) = delete;
    sim_program& operator=(const sim_program&) = delete;
    ~sim_program()
    {
        if (pid > 0) {
            kill(pid, SIGKILL);
            status();
        }
        close(out_fd);
        close(error_fd);
    }

    /// The next line of standard output, without its line feed.
    std::string line() const
    {
        return line_of(out_fd);
    }

    /// The next line of what is complained of.
    std::string complaint_line() const
    {
        return line_of(error_fd);
    }

    /// The port that the ready line names; 0 when there is none.
    std::uint16_t port() const
    {
        const std::string ready = line();
        const std::string start = "tovriksim: listening on 127.0.0.1:";
        EXPECT_TRUE(ready.starts_with(start)) << ready;
        return static_cast<std::uint16_t>(
            std::atoi(ready.substr(std::min(start.size(), ready.size())).c_str()));
    }

    std::string complaint() const
    {
        return all_of(error_fd);
    }

    std::string rest() const
    {
        return all_of(out_fd);
    }

    pid_t process_id() const
    {
        return pid;
    }

    void send_signal(int number) const
    {
        kill(pid, number);
    }

    bool has_ended() const
    {
        siginfo_t about{};
        return waitid(P_PID, static_cast<id_t>(pid), &about, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               about.si_pid == pid;
    }

    /// Waits for the end. The exit status, or minus the signal.
    int status()
    {
        int how = 0;
        waitpid(std::exchange(pid, -1), &how, 0);
        return WIFEXITED(how) ? WEXITSTATUS(how) : -WTERMSIG(how);
    }

private:
    static std::string line_of(int fd)
    {
        std::string text;
        char c = 0;
        while (wait_for_socket(fd, POLLIN, default_patience) && read(fd, &c, 1) == 1 && c != '\n')
            text += c;
        return text;
    }

    static std::string all_of(int fd)
    {
        std::string text;
        char block[4096];
        while (wait_for_socket(fd, POLLIN, default_patience)) {
            const ssize_t count = read(fd, block, sizeof block);
            if (count <= 0)
                break;
            text.append(block, static_cast<std::size_t>(count));
        }
        return text;
    }

    pid_t pid = -1;
    int out_fd = -1;
    int error_fd = -1;
};
