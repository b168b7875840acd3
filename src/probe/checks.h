// The tables of checks. Each table is in the file that its comment names. There, the comment on the
// function of a check says what the library must do.
#pragma once

#include <span>

#include "probe/service.h"
#include "probe/verdict.h"

namespace probe {

struct check {
    const char* name;
    void (*run)(const video_service& service, verdict& result);
};

std::span<const check> getter_checks();  // getters.cpp
std::span<const check> map_checks();     // maps.cpp
std::span<const check> native_checks();  // native.cpp
std::span<const check> object_checks();  // objects.cpp
std::span<const check> format_checks();  // formats.cpp
std::span<const check> manual_checks();  // manual_checks.cpp

}  // namespace probe
