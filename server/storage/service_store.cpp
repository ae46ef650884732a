// service_store.cpp - see service_store.hpp.
#include "server/storage/service_store.hpp"

#include "server/base/zlib_bytes.hpp"

namespace tovrik
{

report_part report_part_of(const std::string& text)
{
    return {.data = zlib_bytes(text), .size = text.size()};
}

} // namespace tovrik
