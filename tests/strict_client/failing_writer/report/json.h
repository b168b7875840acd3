// The tools on the strict client include this file as "report/json.h". The JSON write whose number
// (from 1) is in $ORU_STRICT_WRITE fails after it has written its text.
#pragma once

#include <cstdlib>
#include <string>

#define write_compact write_compact_without_failure
#define write_document write_document_without_failure
#include "../../../../src/report/json.h"
#undef write_compact
#undef write_document

inline bool this_write_fails() {
    static const char* const number = std::getenv("ORU_STRICT_WRITE");
    static int count = 0;
    return number != nullptr && ++count == std::atoi(number);
}

template <class Value>
bool write_compact(const Value& value, std::string& out) {
    return write_compact_without_failure(value, out) && !this_write_fails();
}

template <class Value>
bool write_document(const Value& value, std::string& out) {
    return write_document_without_failure(value, out) && !this_write_fails();
}
