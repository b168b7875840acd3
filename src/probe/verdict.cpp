#include "probe/verdict.h"

#include "snapshot/printable.h"

namespace probe {

void verdict::depart(std::string text) {
    if (departures_++ == 0) {
        first_departure_ = std::move(text);
    }
}

void verdict::add(const verdict& other) {
    has_passes_ |= other.has_passes_;
    if (departures_ == 0) {
        first_departure_ = other.first_departure_;
    }
    departures_ += other.departures_;
}

std::string verdict::line() const {
    if (has_departed()) {
        return "departs: " + snapshot::printable(first_departure_) +
               (departures_ > 1 ? std::format(" (and {} more)", departures_ - 1) : "");
    }
    if (!shown_.empty()) {
        return "see " + snapshot::printable(shown_);
    }
    if (!has_passes_) {
        return "not seen";
    }
    return remark_.empty() ? "ok" : "ok: " + snapshot::printable(remark_);
}

}  // namespace probe
