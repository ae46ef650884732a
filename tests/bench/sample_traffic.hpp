// sample_traffic.hpp - transmissions to measure with: always the same, so that figures of
// different days can be compared.
#pragma once

#include "net/packet.hpp"

#include <span>
#include <string>

/// A transmission's document.
struct sample_document {
    const char* size;
    std::string text;
};

/// One of about 1 kB, every element of the template filled, and one of about 3 kB, with a long
/// message text and many more elements.
std::span<const sample_document> sample_documents();

/// The packet that carries a document as it is (kind 40). The document is below 4,096 bytes.
packet_buffer plain_packet(const std::string& document);

/// The packet that carries a document compressed (kind 204).
packet_buffer compressed_packet(const std::string& document);
