// The result of one check.
#pragma once

#include <cstddef>
#include <format>
#include <string>
#include <utility>

namespace probe {

// A check consists of cases. Each passes or departs from what the tools rely on.
class verdict {
  public:
    void pass() { has_passes_ = true; }

    // The report has the text of the first departure and the number of the others.
    void depart(std::string text);

    // A case that passes if `is_right` is true. Otherwise it departs with the formatted text.
    template <class... Arguments>
    void expect(bool is_right, std::format_string<const Arguments&...> text,
                const Arguments&... arguments) {
        if (is_right) {
            pass();
        } else {
            depart(std::format(text, arguments...));
        }
    }

    // Adds a remark that follows "ok".
    void set_remark(std::string remark) { remark_ = std::move(remark); }

    // Shows a value that only the user can judge.
    void show(std::string value) { shown_ = std::move(value); }

    // Adds the cases of another verdict on the same check.
    void add(const verdict& other);

    bool has_departed() const { return departures_ != 0; }
    bool has_passed() const { return has_passes_ && !has_departed(); }

    // Returns "ok", "ok: REMARK", "see VALUE", "departs: TEXT" or "not seen": one line, without
    // control characters.
    std::string line() const;

  private:
    bool has_passes_ = false;
    std::size_t departures_ = 0;
    std::string first_departure_;
    std::string remark_;
    std::string shown_;
};

// A running service may change between two answers. Repeats an attempt that departs, at most twice,
// and ignores the departure if a later attempt passes.
template <class Verdict, class Attempt>
void retry_departure(Verdict& result, const Attempt& attempt) {
    Verdict first{};
    attempt(first);
    for (int retries = 0; retries < 2 && first.has_departed(); ++retries) {
        Verdict next{};
        attempt(next);
        if (next.has_passed()) {
            first = next;
        }
    }
    result.add(first);
}

}  // namespace probe
