// sample_traffic.hpp - transmissions to measure with: always the same, so that figures of
// different days can be compared.
#pragma once

#include "net/packet.hpp"

#include <cstddef>
#include <string>

/// A transmission's document of about 1,000 bytes, every element of the template filled.
std::string short_document();

/// One of about 3,000 bytes: a long message text and many more elements.
std::string long_document();

/// The packet that carries a document as it is (kind 40). The document is below 4,096 bytes.
packet_buffer plain_packet(const std::string& document);

/// The packet that carries a document compressed (kind 204).
packet_buffer compressed_packet(const std::string& document);
