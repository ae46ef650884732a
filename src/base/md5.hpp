// md5.hpp - the digest in which passwords travel and are kept (RFC 1321).
#pragma once

#include <string_view>

/// Writes the MD5 digest of `bytes` into `hex`: 32 lowercase hexadecimal digits and a NUL.
void md5_hex(std::string_view bytes, char (&hex)[33]);
