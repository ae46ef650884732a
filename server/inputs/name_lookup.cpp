// name_lookup.cpp - see name_lookup.hpp.
#include "server/inputs/name_lookup.hpp"

#include "base/thread_start.hpp"

#include <arpa/inet.h>
#include <cstring>
#include <netdb.h>
#include <new>
#include <sys/eventfd.h>

namespace tovrik
{
namespace
{

using shared_question = std::shared_ptr<name_question>;
using address_list = std::unique_ptr<addrinfo, releaser<freeaddrinfo>>;

void look_up(name_question& question)
{
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(question.host.c_str(), nullptr, &hints, &found);
    const address_list list{failure == 0 ? found : nullptr};
    if (!list || list->ai_addrlen < sizeof question.place) {
        question.error = question.host + ": " + gai_strerror(failure == 0 ? EAI_NONAME : failure);
        return;
    }
    std::memcpy(&question.place, list->ai_addr, sizeof question.place);
}

void announce_answer(name_question& question)
{
    question.is_answered = true;
    eventfd_write(question.answered.get(), 1);
}

void* run_look_up(void* argument)
{
    const std::unique_ptr<shared_question> question{static_cast<shared_question*>(argument)};
    look_up(**question);
    announce_answer(**question);
    return nullptr;
}

bool start_look_up(const shared_question& question)
{
    std::unique_ptr<shared_question> argument{new (std::nothrow) shared_question{question}};
    pthread_t thread{};
    if (!argument || !thread_start(thread, run_look_up, argument.get()))
        return false;
    static_cast<void>(argument.release()); // the thread's now
    return true;
}

} // namespace

std::shared_ptr<const name_question> name_lookup(const std::string& host)
{
    auto question = std::make_shared<name_question>();
    question->host = host;
    question->answered = unique_fd{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)};
    if (!question->answered)
        return {};
    if (inet_pton(AF_INET, host.c_str(), &question->place.sin_addr) == 1) {
        question->place.sin_family = AF_INET;
        announce_answer(*question);
        return question;
    }
    return start_look_up(question) ? question : nullptr;
}

} // namespace tovrik
