// subscriber.cpp - see subscriber.hpp.
#include "services/subscriber.hpp"

#include "ui/prompt.hpp"

namespace
{

constexpr int email_size = 50;

} // namespace

heap_text subscriber_email_ask(const server_entry& entry)
{
    return heap_text{
        prompt_input(email_size, "Enter your email address", hint_or_cancel, entry.UseEMail)};
}

heap_text subscriber_code_ask(const server_entry& entry, int size)
{
    return heap_text{prompt_input(size, "Your subscription code", hint_or_cancel, entry.SubCode)};
}
