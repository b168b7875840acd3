// The names of members in the order in which they come, for lists whose records have much the same
// ones: each is expected after the one that it followed before, and all that are equal share one
// text, which then stays near the processor.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace oru {

class usual_names {
  public:
    // Returns the name that is expected next, empty when there is none.
    std::string_view next() const {
        return next_ < names_.size() ? names_[next_] : std::string_view{};
    }

    // The name that was expected has come.
    void confirm() { ++next_; }

    // Another name has come, whose text lasts. Returns the text to know it by.
    std::string_view learn(std::string_view name);

    // Where the names of a list's records begin, to which each record goes back.
    std::size_t place() const { return next_; }
    void go_back(std::size_t place) { next_ = place; }

  private:
    std::vector<std::string_view> names_;
    std::size_t next_ = 0;
};

}  // namespace oru
