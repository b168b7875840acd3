// The checks of `probe`, in tables of a name beside what is done. Each table stands in the file
// that is named beside it.
#pragma once

#include <span>

#include "probe/service.h"
#include "probe/verdict.h"

struct probe_check {
    const char* name;
    void (*run)(const probed_service& service, verdict& told);
};

std::span<const probe_check> getter_checks();  // getters.cpp
std::span<const probe_check> map_checks();     // maps.cpp
std::span<const probe_check> native_checks();  // native.cpp
std::span<const probe_check> object_checks();  // objects.cpp
std::span<const probe_check> format_checks();  // formats.cpp
std::span<const probe_check> sights();         // sights.cpp
