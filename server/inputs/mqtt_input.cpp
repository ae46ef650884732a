// mqtt_input.cpp - see mqtt_input.hpp.
#include "server/inputs/mqtt_input.hpp"

#include "server/base/whole_file.hpp"
#include "server/inputs/input_limits.hpp"
#include "server/inputs/retry_pause.hpp"

#include <mosquitto.h>
#include <poll.h>
#include <utility>

namespace tovrik
{
namespace
{

/// After how much silence the broker is asked whether it is still there.
constexpr int broker_keepalive_s = 30;

/// How long to wait for the broker before the library looks at its clock.
constexpr int max_wait_ms = 5000;

constexpr int quality_of_service = 1;
constexpr std::size_t max_password_bytes = 4096;
constexpr const char* every_topic = "#";

/// What one thread knows of its broker. Only that thread touches it.
struct broker_session {
    input_options options;
    std::string password;
    std::shared_ptr<hand_over> shared;
    retry_pause pause = {};
    bool is_told = false; ///< that there is no connection
};

using broker_client = std::unique_ptr<mosquitto, releaser<mosquitto_destroy>>;

/// Tells the first of several failures in a row.
void report_failure(broker_session& session, const std::string& reason)
{
    session.shared->is_connected = false;
    if (!std::exchange(session.is_told, true))
        hand_over_line(*session.shared, reason + "; trying again");
}

void on_connected(mosquitto* client, void* context, int refusal)
{
    auto& session = *static_cast<broker_session*>(context);
    if (refusal != 0) {
        report_failure(session, mosquitto_connack_string(refusal));
        return;
    }
    const std::string& topic = session.options.topic;
    mosquitto_subscribe(client, nullptr, topic.empty() ? every_topic : topic.c_str(),
                        quality_of_service);
}

void on_subscribed(mosquitto* client, void* context, int, int count, const int* granted)
{
    auto& session = *static_cast<broker_session*>(context);
    if (count < 1 || granted[0] > 2) {
        report_failure(session, "the broker refuses the topic " + session.options.topic);
        mosquitto_disconnect(client);
        return;
    }
    session.pause = {};
    hand_over_connected(*session.shared);
    if (std::exchange(session.is_told, false))
        hand_over_line(*session.shared, "connected");
}

void on_message(mosquitto*, void* context, const mosquitto_message* message)
{
    const auto& session = *static_cast<broker_session*>(context);
    if (message->retain || message->payloadlen <= 0)
        return;
    hand_over_block(*session.shared, {static_cast<const char*>(message->payload),
                                      static_cast<std::size_t>(message->payloadlen)});
}

broker_client make_client(broker_session& session)
{
    broker_client client{mosquitto_new(nullptr, true, &session)};
    if (!client)
        return client;
    if (!session.options.user.empty())
        mosquitto_username_pw_set(client.get(), session.options.user.c_str(),
                                  session.password.empty() ? nullptr : session.password.c_str());
    mosquitto_connect_callback_set(client.get(), on_connected);
    mosquitto_subscribe_callback_set(client.get(), on_subscribed);
    mosquitto_message_callback_set(client.get(), on_message);
    return client;
}

/// Serves the connection until it ends, or until the thread is to end. Returns why.
int serve_connection(mosquitto* client, const hand_over& shared)
{
    int failure = MOSQ_ERR_SUCCESS;
    while (failure == MOSQ_ERR_SUCCESS && !shared.is_stopping) {
        const bool has_output = mosquitto_want_write(client);
        pollfd waited[] = {{mosquitto_socket(client),
                            static_cast<short>(has_output ? POLLIN | POLLOUT : POLLIN), 0},
                           {shared.stopping.get(), POLLIN, 0}};
        poll(waited, 2, max_wait_ms);
        if (waited[0].revents & ~POLLOUT)
            failure = mosquitto_loop_read(client, 1);
        if (failure == MOSQ_ERR_SUCCESS && waited[0].revents & POLLOUT)
            failure = mosquitto_loop_write(client, 1);
        if (failure == MOSQ_ERR_SUCCESS)
            failure = mosquitto_loop_misc(client);
    }
    return failure;
}

void run_session(broker_session& session)
{
    const broker_client client = make_client(session);
    if (!client) {
        hand_over_line(*session.shared, "out of memory");
        return;
    }
    while (!session.shared->is_stopping) {
        int failure = mosquitto_connect(client.get(), session.options.host.c_str(),
                                        session.options.port, broker_keepalive_s);
        if (failure == MOSQ_ERR_SUCCESS)
            failure = serve_connection(client.get(), *session.shared);
        if (session.shared->is_stopping)
            break;
        report_failure(session, mosquitto_strerror(failure));
        hand_over_rest(*session.shared, retry_take_pause(session.pause));
    }
    mosquitto_disconnect(client.get());
}

} // namespace

prepared_work mqtt_prepare(const input_options& options, const std::shared_ptr<hand_over>& shared)
{
    // The library counts these calls. It is never told of the end: threads may outlive their
    // inputs.
    const int failure = mosquitto_lib_init();
    if (failure != MOSQ_ERR_SUCCESS)
        return {{}, mosquitto_strerror(failure)};
    if (!options.topic.empty() && mosquitto_sub_topic_check(options.topic.c_str()) != 0)
        return {{}, options.topic + ": not a filter of topics"};
    auto session = std::make_shared<broker_session>(broker_session{options, {}, shared});
    if (!options.password_file.empty()) {
        whole_file file = read_whole_file(options.password_file, max_password_bytes);
        if (!file.error.empty())
            return {{}, std::move(file.error)};
        session->password = file.text.substr(0, file.text.find_first_of("\r\n"));
    }
    return {[session] { run_session(*session); }, {}};
}

} // namespace tovrik
