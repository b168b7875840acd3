// Snapshots of running streams, and the arrays of their report.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/tools.h"

// One running stream; the maps are JSON text.
struct stream {
    std::string id = "1";
    std::string info = "{}";
    std::string settings = "{}";
    std::string debug = "{}";
};

// Returns a snapshot of these streams. `formats` is the JSON text of the formats, or empty for the
// default ones.
inline std::string snapshot_of(const std::vector<stream>& streams,
                               const std::string& formats = "") {
    std::string all;
    for (const stream& each : streams) {
        all += (all.empty() ? "" : ", ") + (R"({"id": )" + each.id) + R"(, "info": )" + each.info +
               R"(, "settings": )" + each.settings + R"(, "debug": )" + each.debug + "}";
    }
    return R"({"stream": {"all": [)" + all + "]}" +
           (formats.empty() ? "" : R"(, "formats": )" + formats) + "}";
}

// Returns the lines of one array of the report on the streams of a snapshot, without the lines of
// its brackets.
inline std::string array_of(const std::string& name, const std::string& snapshot) {
    const result got = report(snapshot, {"--list-streams"});
    EXPECT_EQ(got.status, 0) << got;
    EXPECT_EQ(got.err, "");
    const std::string opening = "    \"" + name + "\" : [\n";
    const std::size_t begin = got.out.find(opening);
    const std::size_t end = got.out.find("\n    ]", begin);
    if (begin == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << "no array \"" << name << "\" in\n" << got;
        return "";
    }
    return got.out.substr(begin + opening.size(), end + 1 - begin - opening.size());
}
