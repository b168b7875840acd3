#include "probe/verdict.h"

#include "snapshot/printable.h"

void verdict::departs(std::string seen) {
    if (departures_++ == 0) {
        first_ = std::move(seen);
    }
}

void verdict::add(const verdict& other) {
    tried_ |= other.tried_;
    if (departures_ == 0) {
        first_ = other.first_;
    }
    departures_ += other.departures_;
}

std::string verdict::text() const {
    if (has_departed()) {
        return "departs: " + printable(first_) +
               (departures_ > 1 ? std::format(" (and {} more)", departures_ - 1) : "");
    }
    if (!sight_.empty()) {
        return "see " + printable(sight_);
    }
    if (!tried_) {
        return "not seen";
    }
    return remark_.empty() ? "ok" : "ok: " + printable(remark_);
}
