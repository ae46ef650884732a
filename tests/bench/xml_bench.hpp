// xml_bench.hpp - measures our XML reader beside common libraries.
#pragma once

/// The names of the benchmarks begin with this; the document's size and the reader follow.
constexpr const char* xml_bench_name = "xml/";

/// Registers each reader on a short and a long transmission. False if they do not all find the same
/// values.
bool xml_benchmarks_add();
