// sample_traffic.hpp - transmissions for measurements: always the same, so that figures of
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

/// One of about 1 kB with every element of the template filled, and one of about 3 kB with a long
/// message text and many more elements.
std::span<const sample_document> sample_documents();

/// A packet with a plain document (kind 40). The document is below 4,096 bytes.
packet_buffer plain_packet(const std::string& document);

/// A packet with a compressed document (kind 204).
packet_buffer compressed_packet(const std::string& document);

/// A packet with a text for the user (kind 64). The text is below 4,096 bytes.
packet_buffer text_packet(const std::string& text);
