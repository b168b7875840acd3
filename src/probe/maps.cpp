// What a map does when it is changed, and to whom.
#include <algorithm>
#include <format>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/content.h"
#include "video/native.h"

namespace {

using content = std::vector<worded_entry>;

// Returns the content without the entries that `gone` names.
template <class Gone>
content without(const content& all, const Gone& gone) {
    content rest = all;
    std::erase_if(rest, [&](const worded_entry& entry) { return gone(entry.key); });
    return rest;
}

auto starts_with(const std::string& prefix) {
    return [prefix = std::string(prefix)](std::string_view key) { return key.starts_with(prefix); };
}

auto is_key(const std::string& wanted) {
    return [wanted = std::string(wanted)](std::string_view key) { return key == wanted; };
}

void expect_same(verdict& told, const std::string& about, const content& wanted,
                 const content& got) {
    if (wanted == got) {
        told.is_right();
    } else {
        told.departs(std::format("{}: {}", about, difference(wanted, got)));
    }
}

// Prefixes that some keys of the map begin with.
std::vector<std::string> some_prefixes(const content& all) {
    std::vector<std::string> prefixes;
    for (const std::string& key : some_keys(all)) {
        if (!key.empty()) {
            prefixes.push_back(key.substr(0, (key.size() + 1) / 2));
        }
    }
    return prefixes;
}

// Takes something out of each map, and nothing: the rest stays as it was.
template <class Pick, class TakeOut, class Gone>
void check_removal(const probed_service& service, verdict& told, const Pick& pick,
                   const TakeOut& take_out, const Gone& gone) {
    for (const map_source& source : service.every_map) {
        std::vector<std::string> picked;
        if (const living<OruMap> map = source.ask(); map.get() != nullptr) {
            const content all = content_of(map.get());
            picked = pick(all);
            picked.push_back(absent_key(all));
        }
        for (const std::string& what : picked) {
            if (const living<OruMap> map = source.ask(); map.get() != nullptr) {
                const content before = content_of(map.get());
                take_out(map.get(), what.c_str());
                expect_same(told, std::format("{} without '{}'", source.name, what),
                            without(before, gone(what)), content_of(map.get()));
            }
        }
    }
}

// What is taken out of an answer is not taken out of the service.
template <class Pick, class TakeOut, class Gone>
void check_service(const probed_service& service, verdict& told, const Pick& pick,
                   const TakeOut& take_out, const Gone& gone) {
    for (const map_source& source : service.maps) {
        try_again(told, [&](verdict& now) {
            content before;
            std::vector<std::string> picked;
            if (const living<OruMap> map = source.ask(); map.get() != nullptr) {
                before = content_of(map.get());
                picked = pick(before);
                for (const std::string& what : picked) {
                    take_out(map.get(), what.c_str());
                }
            }
            const living<OruMap> again = source.ask();
            if (again.get() == nullptr) {
                return;
            }
            const content after = content_of(again.get());
            for (const worded_entry& entry : before) {
                const auto is_gone = [&](const auto& what) { return gone(what)(entry.key); };
                if (std::ranges::any_of(picked, is_gone)) {
                    now.expect(
                        std::ranges::find(after, entry.key, &worded_entry::key) != after.end(),
                        "{}: '{}' is gone", source.name, entry.key);
                }
            }
        });
    }
}

// --- The checks ---------------------------------------------------------------------------------

void new_map(const probed_service&, verdict& told) {
    const owned_object<OruMap> one{oru_map_new()};
    const owned_object<OruMap> other{oru_map_new()};
    told.expect(one != nullptr && other != nullptr, "NULL");
    if (told.has_departed()) {
        return;
    }
    expect_same(told, "a new map", {}, content_of(one.get()));
    oru_map_set_string(one.get(), "key", "text");
    expect_same(told, "a new map beside another", {}, content_of(other.get()));
}

void set_string(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const content before = content_of(map);
        std::vector<std::string> keys = some_keys(before);
        keys.push_back(absent_key(before));
        content wanted = before;
        for (const std::string& key : keys) {
            // The map has a copy of its own.
            std::string text = "as it was set";
            oru_map_set_string(map, key.c_str(), text.c_str());
            std::ranges::fill(text, '?');
            wanted = without(wanted, is_key(key));
            wanted.push_back({key, words_of(std::string("as it was set"))});
        }
        content got = content_of(map);
        std::ranges::sort(wanted, {}, &worded_entry::key);
        std::ranges::sort(got, {}, &worded_entry::key);
        expect_same(told, name, wanted, got);
    });
}

void contains(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const content all = content_of(map);
        for (const worded_entry& entry : all) {
            if (!entry.key.contains('\0')) {
                told.expect(oru_map_contains(map, entry.key.c_str()) != FALSE,
                            "{}: FALSE for '{}', {}", name, entry.key, entry.value);
            }
        }
        const std::string absent = absent_key(all);
        told.expect(oru_map_contains(map, absent.c_str()) == FALSE, "{}: TRUE for absent '{}'",
                    name, absent);
    });
}

void remove(const probed_service& service, verdict& told) {
    check_removal(service, told, some_keys, oru_map_remove, is_key);
}

void service_after_remove(const probed_service& service, verdict& told) {
    check_service(service, told, some_keys, oru_map_remove, is_key);
}

void remove_prefix(const probed_service& service, verdict& told) {
    check_removal(service, told, some_prefixes, oru_map_remove_prefix, starts_with);
}

void service_after_remove_prefix(const probed_service& service, verdict& told) {
    check_service(service, told, some_prefixes, oru_map_remove_prefix, starts_with);
}

void filter_prefix(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const content all = content_of(map);
        std::vector<std::string> prefixes = some_prefixes(all);
        prefixes.push_back(absent_key(all));
        for (const std::string& prefix : prefixes) {
            const owned_object<OruMap> part{oru_map_filter_prefix(map, prefix.c_str())};
            if (part == nullptr) {
                told.departs(std::format("{}: NULL for '{}'", name, prefix));
                continue;
            }
            const content kept = content_of(part.get());
            expect_same(told, std::format("{} of '{}'", name, prefix),
                        without(all, std::not_fn(starts_with(prefix))), kept);
            // The part is a map of its own.
            for (const std::string& key : some_keys(kept)) {
                oru_map_remove(part.get(), key.c_str());
            }
            expect_same(told, std::format("{} after a change of its part", name), all,
                        content_of(map));
        }
    });
}

void empty(const probed_service& service, verdict& told) {
    const auto expect = [&](const std::string& about, OruMap* map) {
        const bool is_empty = oru_map_empty(map) != FALSE;
        const std::size_t keys = content_of(map).size();
        told.expect(is_empty == (keys == 0), "{}: {} with {} keys", about,
                    is_empty ? "TRUE" : "FALSE", keys);
    };
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        expect(name, map);
        const std::string none = absent_key(content_of(map));
        if (const owned_object<OruMap> part{oru_map_filter_prefix(map, none.c_str())};
            part != nullptr) {
            expect(std::format("{} of '{}'", name, none), part.get());
        }
    });
    if (const owned_object<OruMap> map = map_with("key", "text"); map != nullptr) {
        oru_map_remove(map.get(), "key");
        expect("a map whose only key was removed", map.get());
    }
}

// Two answers to one query are two maps, and neither is the service's own.
void two_maps(const probed_service& service, verdict& told) {
    for (const map_source& source : service.maps) {
        try_again(told, [&](verdict& now) {
            const living<OruMap> one = source.ask();
            const living<OruMap> other = source.ask();
            if (one.get() == nullptr || other.get() == nullptr) {
                return;
            }
            const content before = content_of(other.get());
            const std::string added = absent_key(before);
            oru_map_set_string(one.get(), added.c_str(), "text");
            for (const std::string& key : some_keys(before)) {
                oru_map_remove(one.get(), key.c_str());
            }
            expect_same(now, source.name + ", changed in another answer", before,
                        content_of(other.get()));
            if (const living<OruMap> third = source.ask(); third.get() != nullptr) {
                now.expect(oru_map_contains(third.get(), added.c_str()) == FALSE,
                           "{}: '{}' is in the service, too", source.name, added);
            }
        });
    }
}

constexpr probe_check checks[] = {
    // These come before anything else is taken out of a map: the service would lack it by then.
    {"the service after oru_map_remove", service_after_remove},
    {"the service after oru_map_remove_prefix", service_after_remove_prefix},
    {"oru_map_new", new_map},
    {"oru_map_set_string", set_string},
    {"oru_map_contains", contains},
    {"oru_map_remove", remove},
    {"oru_map_remove_prefix", remove_prefix},
    {"oru_map_filter_prefix", filter_prefix},
    {"oru_map_empty", empty},
    {"maps of two queries", two_maps},
};

}  // namespace

std::span<const probe_check> map_checks() {
    return checks;
}
