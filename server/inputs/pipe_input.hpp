// pipe_input.hpp - JSON lines from a named pipe, or from standard input.
//
// A named pipe outlives its writers. Standard input ends for good.
#pragma once

#include "server/inputs/input_source.hpp"

namespace tovrik
{

class pipe_input : public input_source
{
public:
    pipe_input(input_options chosen, input_host& home);

    std::string open(time_point now) override;
    void on_event(int fd, time_point now) override;

private:
    void on_end(time_point now);

    watched_fd stream;
    json_lines lines;
};

} // namespace tovrik
