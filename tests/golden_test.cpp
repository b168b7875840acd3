// Compares whole reports of the examples with golden files. Each line of a golden file was checked
// by hand when the file was created.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

std::string content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string example(const std::string& name) {
    return content(std::filesystem::path(ORU_EXAMPLES_DIR) / (name + ".json"));
}

std::string golden(const std::string& name) {
    return content(std::filesystem::path(ORU_GOLDEN_DIR) / (name + ".txt"));
}

TEST(golden, every_example_has_one_for_each_tool) {
    std::set<std::string> expected;
    for (const auto& entry : std::filesystem::directory_iterator(ORU_EXAMPLES_DIR)) {
        if (entry.path().extension() == ".json") {
            expected.insert(entry.path().stem().string() + ".tlm.txt");
            expected.insert(entry.path().stem().string() + ".report.txt");
        }
    }
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(ORU_GOLDEN_DIR)) {
        found.insert(entry.path().filename().string());
    }
    EXPECT_EQ(found, expected);
}

void expect_golden_reports(const std::string& name) {
    const std::string snapshot = example(name);
    EXPECT_EQ(tlm(snapshot, {"-q", "-s", "-i"}), ended(0, golden(name + ".tlm")));
    EXPECT_EQ(report(snapshot, {"-l", "-q", "-o", "-c", "-a", "-i"}),
              ended(0, golden(name + ".report")));
}

TEST(golden, two_input_encoder) {
    expect_golden_reports("two-input-encoder");
}

// A recording of two-input-encoder.
TEST(golden, recorded_encoder) {
    expect_golden_reports("recorded-encoder");
}

// The device whose recordings the manual compares, and the same device with four faults.
TEST(golden, healthy_encoder) {
    expect_golden_reports("healthy-encoder");
}

TEST(golden, faulty_encoder) {
    expect_golden_reports("faulty-encoder");
}

TEST(golden, failing_device) {
    const std::string snapshot = example("failing-device");
    EXPECT_EQ(tlm(snapshot, {"-q", "-s", "-i"}), ended(0, golden("failing-device.tlm")));
    EXPECT_EQ(report(snapshot, {"-l", "-q", "-c", "-a", "-i"}),
              ended(0, golden("failing-device.report")));
    EXPECT_EQ(report(snapshot, {"-o", "-i"}), ended(1, "",
                                                    "oru-serverreport-tool: Failed to get output: "
                                                    "HDMI transmitter does not answer\n"));
}

}  // namespace
