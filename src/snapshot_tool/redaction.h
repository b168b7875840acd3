// What tells about people is replaced in a recording that leaves the house: the identities of the
// service's clients become client-1, client-2 and so on, each the same one everywhere, and the
// messages of failures become "redacted".
#pragma once

#include <map>
#include <string>
#include <string_view>

class redaction {
  public:
    // Each returns what stands in the place of a map's key, of the text or of the JSON text that
    // the map holds under `key`, and of a failure's message.
    std::string key(const std::string& key);
    std::string text(std::string_view key, const std::string& text);
    static std::string json(std::string_view key, const std::string& json);
    static std::string message() { return "redacted"; }

  private:
    const std::string& client(const std::string& identity);

    std::map<std::string, std::string> clients_;  // by identity
};
