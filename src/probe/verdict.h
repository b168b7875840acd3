// What a check of `probe` has found.
#pragma once

#include <format>
#include <string>
#include <string_view>
#include <utility>

class verdict {
  public:
    // Something was tried and is as the tools count on it.
    void is_right() { tried_ = true; }

    // Something was tried and is not. The first is told, of more that there are some.
    void departs(std::string seen);

    // One of the two; the text is made only for the second.
    template <class... Arguments>
    void expect(bool right, std::format_string<const Arguments&...> seen,
                const Arguments&... arguments) {
        if (right) {
            is_right();
        } else {
            departs(std::format(seen, arguments...));
        }
    }

    // What a person is told beside "ok".
    void adds(std::string remark) { remark_ = std::move(remark); }

    // What only a person can judge.
    void shows(std::string sight) { sight_ = std::move(sight); }

    // Takes in what another check of the same has found.
    void add(const verdict& other);

    bool has_departed() const { return departures_ != 0; }
    bool is_ok() const { return tried_ && !has_departed(); }

    // "ok", "ok: ...", "see ...", "departs: ..." or "not seen", in one line for a terminal.
    std::string text() const;

  private:
    bool tried_ = false;
    std::size_t departures_ = 0;
    std::string first_;
    std::string remark_;
    std::string sight_;
};

// Two answers of a running service may differ because something happened in between: what departs
// is tried twice more, and counts unless it is as it should be then.
template <class Verdict, class Attempt>
void try_again(Verdict& told, const Attempt& attempt) {
    Verdict first{};
    attempt(first);
    for (int again = 0; again < 2 && first.has_departed(); ++again) {
        Verdict next{};
        attempt(next);
        if (next.is_ok()) {
            first = next;
        }
    }
    told.add(first);
}
