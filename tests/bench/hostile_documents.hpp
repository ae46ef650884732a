// hostile_documents.hpp - documents of transmissions that cost a reader as much as they can.
#pragma once

#include <span>
#include <string>

struct hostile_document {
    const char* what;
    std::string text; // as long as one packet can make it; compressed, it fits into one
};

/// The first one is the one that takes most memory.
std::span<const hostile_document> hostile_documents();
