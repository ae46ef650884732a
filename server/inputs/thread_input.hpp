// thread_input.hpp - an input whose library waits for messages in a thread of its own.
#pragma once

#include "server/inputs/hand_over.hpp"
#include "server/inputs/input_source.hpp"

#include <functional>
#include <memory>

namespace tovrik
{

/// What a library's thread does until it is to end, made of an input's options; or an error text.
struct prepared_work {
    std::function<void()> run;
    std::string error; ///< empty on success
};
using prepare_work = prepared_work (*)(const input_options& options,
                                       const std::shared_ptr<hand_over>& shared);

class thread_input : public input_source
{
public:
    thread_input(input_options chosen, input_host& home, prepare_work chosen_work);
    ~thread_input() override;

    std::string open(time_point now) override;
    void on_event(int fd, time_point now) override;
    void on_time(time_point now) override;
    time_point next_time() const override;
    void refresh_counters() override;
    void stop() override;
    void wait_for_end(time_point deadline) override;

private:
    prepare_work prepare;
    std::shared_ptr<hand_over> shared; ///< null: not open
    watched_fd filled;
    block_queue waiting;
    json_lines lines;
};

} // namespace tovrik
