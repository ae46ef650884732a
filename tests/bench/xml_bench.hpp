// xml_bench.hpp - measures our XML reader beside those that people use instead.
#pragma once

/// What the names of the benchmarks begin with; behind it the document's size and the reader.
constexpr const char* xml_bench_name = "xml/";

/// Registers each reader on a short and a long transmission. False when they do not all find the
/// same values.
bool xml_benchmarks_add();
