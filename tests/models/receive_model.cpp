// receive_model.cpp - see receive_model.hpp.
#include "models/receive_model.hpp"

#include <algorithm>

namespace
{

constexpr std::size_t last_text_kind = 199;

} // namespace

bool receive_model::is_ready() const
{
    return !stream.empty() || has_ended;
}

std::string receive_model::read(std::size_t most)
{
    std::string bytes = stream.substr(0, most);
    stream.erase(0, bytes.size());
    bytes_received += bytes.size();
    return bytes;
}

std::size_t receive_model::field(std::size_t first, std::size_t bytes) const
{
    std::size_t number = 0;
    for (std::size_t at = first + bytes; at-- > first;)
        number = number * 256 + static_cast<unsigned char>(packet[at]);
    return number;
}

receive_model_result receive_model::drop(receive_model_result result)
{
    has_packet = false;
    return result;
}

receive_model_result receive_model::receive()
{
    if (!has_packet) {
        if (!is_ready())
            return receive_model_result::pending;
        has_packet = true;
        received = 0;
        packet = read(receive_model_header_bytes);
        const bool is_cut = packet.size() < receive_model_header_bytes;
        packet.resize(receive_model_header_bytes + receive_model_payload_bytes, '\0');
        if (is_cut)
            return has_ended ? drop(receive_model_result::failed) : receive_model_result::pending;
    }
    if (field(4, 4) == 0)
        return drop(receive_model_result::pending);
    return is_ready() ? receive_payload() : receive_model_result::pending;
}

receive_model_result receive_model::receive_payload()
{
    const std::size_t length = field(4, 2);
    const std::string bytes = read(std::min(length, receive_model_payload_bytes));
    if (bytes.empty())
        return drop(receive_model_result::failed);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        if (received + at < receive_model_payload_bytes)
            packet[receive_model_header_bytes + received + at] = bytes[at];
    }
    received += bytes.size();
    if (received < length)
        return receive_model_result::pending;
    const std::size_t end = std::min(length, receive_model_payload_bytes - 1);
    if (field(0, 4) <= last_text_kind)
        packet[receive_model_header_bytes + end] = '\0';
    return receive_model_result::complete;
}
