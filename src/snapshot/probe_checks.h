// The checks of `probe`, in tables of a name beside what is done. Each table stands in the file
// that is named beside it.
#pragma once

#include <span>

#include "snapshot/probe_service.h"
#include "snapshot/probe_verdict.h"

struct probe_check {
    const char* name;
    void (*run)(const probed_service& service, verdict& told);
};

std::span<const probe_check> getter_checks();  // probe_getters.cpp
std::span<const probe_check> map_checks();     // probe_maps.cpp
std::span<const probe_check> native_checks();  // probe_native.cpp
std::span<const probe_check> object_checks();  // probe_objects.cpp
std::span<const probe_check> format_checks();  // probe_formats.cpp
std::span<const probe_check> sights();         // probe_sights.cpp
