// The ownership of the maps of reported streams when memory runs out. This test replaces the
// service, and the records of a stream, which print nothing here.
#include <array>
#include <new>
#include <vector>

#include <gtest/gtest.h>
#include <oru.h>

#include "serverreport/sections.h"
#include "serverreport/stream_snapshot.h"
#include "support/failing_allocations.h"

namespace {

constexpr std::size_t stream_count = 20;

// The maps of each stream whose info was queried. The test has a reference to each map.
using maps_of_stream = std::array<GObject*, 3>;
std::array<maps_of_stream, stream_count> maps;
std::size_t streams_asked = 0;

OruMap* map_of_last_stream(std::size_t part) {
    auto* map = static_cast<GObject*>(g_object_new(G_TYPE_OBJECT, nullptr));
    maps[streams_asked - 1][part] = map;
    return reinterpret_cast<OruMap*>(g_object_ref(map));
}

}  // namespace

GList* oru_stream_get_all(GError**) {
    GList* streams = nullptr;
    for (std::size_t i = 0; i < stream_count; ++i) {
        streams = g_list_prepend(streams, g_object_new(G_TYPE_OBJECT, nullptr));
    }
    return streams;
}

guint32 oru_stream_get_id(OruStream*) {
    return 1;
}

OruMap* oru_stream_get_info(OruStream*, GError**) {
    ++streams_asked;
    return map_of_last_stream(0);
}

OruMap* oru_stream_get_debug(OruStream*, GError**) {
    return map_of_last_stream(1);
}

OruMap* oru_stream_get_settings(OruStream*, GError**) {
    return map_of_last_stream(2);
}

guint32 oru_map_get_uint32(OruMap*, const gchar*, guint32 def) {
    return def;
}

const gchar* oru_map_get_string(OruMap*, const gchar*, gsize*, const gchar* def) {
    return def;
}

void print_stream_summary(const stream_snapshot_entry&, std::uint32_t) {}
void print_stream_settings(const stream_snapshot_entry&, std::uint32_t) {}
void print_stream_statistics(const stream_snapshot_entry&, std::uint32_t) {}

namespace {

// Runs the section with this number of allocations. Returns false if an allocation failed.
bool list_streams_with(long successful_allocations) {
    streams_asked = 0;
    testing::internal::CaptureStdout();
    allocations_left = successful_allocations;
    bool succeeded = true;
    try {
        list_streams();
    } catch (const std::bad_alloc&) {
        succeeded = false;
    }
    allocations_left = -1;
    testing::internal::GetCapturedStdout();
    return succeeded;
}

// Every allocation of the section fails in turn. A stream's maps are kept until the process ends,
// or, if the stream could not be added, released once.
TEST(kept_maps, are_neither_lost_nor_released_twice_when_memory_runs_out) {
    long failures = 0;
    while (!list_streams_with(failures)) {
        ++failures;
        for (std::size_t i = 0; i < streams_asked; ++i) {
            const bool is_added = i + 1 < streams_asked;
            for (GObject* map : maps[i]) {
                ASSERT_EQ(map->ref_count, is_added ? 2U : 1U)
                    << "stream " << i << ", failure " << failures;
                g_object_unref(map);
            }
        }
    }
    EXPECT_GT(failures, 3);
    for (const maps_of_stream& kept : maps) {
        for (GObject* map : kept) {
            ASSERT_EQ(map->ref_count, 2U);
            g_object_unref(map);
        }
    }
}

}  // namespace
