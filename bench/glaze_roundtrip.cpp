// For comparison: glaze reads a JSON file into a generic value with sorted members and writes it
// again.

#include <cstdio>
#include <string>

#include <glaze/json.hpp>

int main(int argc, char** argv) {
    std::string text;
    if (argc != 2 || glz::file_to_buffer(text, argv[1]) != glz::error_code::none) {
        std::fputs("usage: glaze_roundtrip FILE\n", stderr);
        return 2;
    }
    glz::generic_json<glz::num_mode::f64, glz::generic_sorted_map> value;
    if (glz::read_json(value, text)) {
        return 1;
    }
    std::string out;
    if (glz::write_json(value, out)) {
        return 1;
    }
    return std::fwrite(out.data(), 1, out.size(), stdout) == out.size() ? 0 : 1;
}
