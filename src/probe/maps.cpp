// Checks of the operations on maps, except the getters.
#include <algorithm>
#include <format>
#include <string>
#include <string_view>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/map_contents.h"

namespace probe {
namespace {

// --- Removal ------------------------------------------------------------------------------------

bool starts_with(std::string_view key, std::string_view prefix) {
    return key.starts_with(prefix);
}

bool equals(std::string_view key, std::string_view other) {
    return key == other;
}

// Returns the first half of some keys of the map.
std::vector<std::string> sample_prefixes(const map_contents& contents) {
    std::vector<std::string> prefixes;
    for (const std::string& key : sample_keys(contents)) {
        if (!key.empty()) {
            prefixes.push_back(key.substr(0, (key.size() + 1) / 2));
        }
    }
    return prefixes;
}

// An operation that removes the entries whose keys match its argument.
struct removal {
    void (*remove)(OruMap* map, const gchar* argument);
    bool (*matches)(std::string_view key, std::string_view argument);
    std::vector<std::string> (*sample_arguments)(const map_contents& contents);
};
constexpr removal removal_by_key = {oru_map_remove, equals, sample_keys};
constexpr removal removal_by_prefix = {oru_map_remove_prefix, starts_with, sample_prefixes};

map_contents without(map_contents contents, const removal& operation, std::string_view argument) {
    std::erase_if(contents,
                  [&](const text_entry& entry) { return operation.matches(entry.key, argument); });
    return contents;
}

void expect_equal(verdict& result, const std::string& name, const map_contents& expected,
                  const map_contents& actual) {
    if (expected == actual) {
        result.pass();
    } else {
        result.depart(std::format("{}: {}", name, first_difference(expected, actual)));
    }
}

// Returns arguments for the operation: some that match a key of the map, and one that does not.
std::vector<std::string> arguments_for(const removal& operation, const map_source& source) {
    const tracked<OruMap> map = source.query();
    if (map.get() == nullptr) {
        return {};
    }
    const map_contents contents = contents_of(map.get());
    std::vector<std::string> arguments = operation.sample_arguments(contents);
    arguments.push_back(absent_key(contents));
    return arguments;
}

// The operation removes the matching entries of the map and no others.
void check_removal(const video_service& service, const removal& operation, verdict& result) {
    for (const map_source& source : service.maps_and_new_map) {
        for (const std::string& argument : arguments_for(operation, source)) {
            const tracked<OruMap> map = source.query();
            if (map.get() == nullptr) {
                continue;
            }
            const map_contents expected = without(contents_of(map.get()), operation, argument);
            operation.remove(map.get(), argument.c_str());
            expect_equal(result, std::format("{} without '{}'", source.name, argument), expected,
                         contents_of(map.get()));
        }
    }
}

// Removes entries from an answer of the service. Returns the removed keys.
std::vector<std::string> remove_from_answer(const removal& operation, const map_source& source) {
    const tracked<OruMap> map = source.query();
    if (map.get() == nullptr) {
        return {};
    }
    const map_contents contents = contents_of(map.get());
    const std::vector<std::string> arguments = operation.sample_arguments(contents);
    for (const std::string& argument : arguments) {
        operation.remove(map.get(), argument.c_str());
    }
    std::vector<std::string> removed_keys;
    for (const text_entry& entry : contents) {
        if (std::ranges::any_of(arguments, [&](const std::string& argument) {
                return operation.matches(entry.key, argument);
            })) {
            removed_keys.push_back(entry.key);
        }
    }
    return removed_keys;
}

// The service still has the entries that were removed from one of its answers.
void check_service_after(const video_service& service, const removal& operation, verdict& result) {
    for (const map_source& source : service.maps) {
        retry_departure(result, [&](verdict& attempt) {
            const std::vector<std::string> removed_keys = remove_from_answer(operation, source);
            const tracked<OruMap> next_answer = source.query();
            if (next_answer.get() == nullptr) {
                return;
            }
            map_contents contents = contents_of(next_answer.get());
            std::ranges::sort(contents, {}, &text_entry::key);
            for (const std::string& key : removed_keys) {
                attempt.expect(std::ranges::binary_search(contents, key, {}, &text_entry::key),
                               "{}: '{}' is gone", source.name, key);
            }
        });
    }
}

void check_remove(const video_service& service, verdict& result) {
    check_removal(service, removal_by_key, result);
}

void check_service_after_remove(const video_service& service, verdict& result) {
    check_service_after(service, removal_by_key, result);
}

void check_remove_prefix(const video_service& service, verdict& result) {
    check_removal(service, removal_by_prefix, result);
}

void check_service_after_remove_prefix(const video_service& service, verdict& result) {
    check_service_after(service, removal_by_prefix, result);
}

// --- Other operations ---------------------------------------------------------------------------

void check_new(const video_service&, verdict& result) {
    const owned_object<OruMap> map{oru_map_new()};
    const owned_object<OruMap> other_map{oru_map_new()};
    result.expect(map != nullptr && other_map != nullptr, "NULL");
    if (result.has_departed()) {
        return;
    }
    expect_equal(result, "a new map", {}, contents_of(map.get()));
    oru_map_set_string(map.get(), "key", "text");
    expect_equal(result, "a new map beside another", {}, contents_of(other_map.get()));
}

void check_set_string(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        map_contents expected = contents_of(map);
        std::vector<std::string> keys = sample_keys(expected);
        keys.push_back(absent_key(expected));
        for (const std::string& key : keys) {
            // The map must copy the text.
            std::string text = "as it was set";
            oru_map_set_string(map, key.c_str(), text.c_str());
            std::ranges::fill(text, '?');
            expected = without(std::move(expected), removal_by_key, key);
            expected.push_back({key, value_text(std::string("as it was set"))});
        }
        map_contents actual = contents_of(map);
        std::ranges::sort(expected, {}, &text_entry::key);
        std::ranges::sort(actual, {}, &text_entry::key);
        expect_equal(result, name, expected, actual);
    });
}

void check_contains(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const map_contents contents = contents_of(map);
        for (const text_entry& entry : contents) {
            if (is_c_text(entry.key)) {
                result.expect(oru_map_contains(map, entry.key.c_str()) != FALSE,
                              "{}: FALSE for '{}', {}", name, entry.key, entry.value);
            }
        }
        const std::string absent = absent_key(contents);
        result.expect(oru_map_contains(map, absent.c_str()) == FALSE, "{}: TRUE for absent '{}'",
                      name, absent);
    });
}

void check_filter_prefix(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const map_contents contents = contents_of(map);
        std::vector<std::string> prefixes = sample_prefixes(contents);
        prefixes.push_back(absent_key(contents));
        for (const std::string& prefix : prefixes) {
            const owned_object<OruMap> part{oru_map_filter_prefix(map, prefix.c_str())};
            if (part == nullptr) {
                result.depart(std::format("{}: NULL for '{}'", name, prefix));
                continue;
            }
            std::vector<std::string> keys;
            {
                map_contents expected = contents;
                std::erase_if(expected, [&](const text_entry& entry) {
                    return !starts_with(entry.key, prefix);
                });
                const map_contents actual = contents_of(part.get());
                expect_equal(result, std::format("{} of '{}'", name, prefix), expected, actual);
                keys = sample_keys(actual);
            }
            // A change of the part must not change the map.
            for (const std::string& key : keys) {
                oru_map_remove(part.get(), key.c_str());
            }
            expect_equal(result, std::format("{} after a change of its part", name), contents,
                         contents_of(map));
        }
    });
}

void check_empty(const video_service& service, verdict& result) {
    const auto expect = [&](const std::string& name, OruMap* map) {
        const bool is_empty = oru_map_empty(map) != FALSE;
        const std::size_t keys = contents_of(map).size();
        result.expect(is_empty == (keys == 0), "{}: {} with {} keys", name,
                      is_empty ? "TRUE" : "FALSE", keys);
    };
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        expect(name, map);
        const std::string absent = absent_key(contents_of(map));
        if (const owned_object<OruMap> part{oru_map_filter_prefix(map, absent.c_str())};
            part != nullptr) {
            expect(std::format("{} of '{}'", name, absent), part.get());
        }
    });
    if (const owned_object<OruMap> map = map_with("key", "text"); map != nullptr) {
        oru_map_remove(map.get(), "key");
        expect("a map whose only key was removed", map.get());
    }
}

// A change of one answer changes neither another answer nor the service.
void check_two_answers(const video_service& service, verdict& result) {
    for (const map_source& source : service.maps) {
        retry_departure(result, [&](verdict& attempt) {
            const tracked<OruMap> changed = source.query();
            const tracked<OruMap> unchanged = source.query();
            if (changed.get() == nullptr || unchanged.get() == nullptr) {
                return;
            }
            const map_contents before = contents_of(unchanged.get());
            const std::string added_key = absent_key(before);
            oru_map_set_string(changed.get(), added_key.c_str(), "text");
            for (const std::string& key : sample_keys(before)) {
                oru_map_remove(changed.get(), key.c_str());
            }
            expect_equal(attempt, source.name + ", changed in another answer", before,
                         contents_of(unchanged.get()));
            if (const tracked<OruMap> third = source.query(); third.get() != nullptr) {
                attempt.expect(oru_map_contains(third.get(), added_key.c_str()) == FALSE,
                               "{}: '{}' is in the service, too", source.name, added_key);
            }
        });
    }
}

constexpr check map_table[] = {
    // These two are first. All removals change the service if the library is faulty, and an entry
    // that an earlier check has removed cannot show the fault.
    {"the service after oru_map_remove", check_service_after_remove},
    {"the service after oru_map_remove_prefix", check_service_after_remove_prefix},
    {"oru_map_new", check_new},
    {"oru_map_set_string", check_set_string},
    {"oru_map_contains", check_contains},
    {"oru_map_remove", check_remove},
    {"oru_map_remove_prefix", check_remove_prefix},
    {"oru_map_filter_prefix", check_filter_prefix},
    {"oru_map_empty", check_empty},
    {"maps of two queries", check_two_answers},
};

}  // namespace

std::span<const check> map_checks() {
    return map_table;
}

}  // namespace probe
