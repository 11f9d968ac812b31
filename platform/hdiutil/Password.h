#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace hdiutil {

// A password read from standard input. Its bytes are overwritten when it goes away, and it
// is never copied.
class Secret {
public:
    Secret() = default;
    explicit Secret(std::string bytes) : m_bytes(std::move(bytes)) {}
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    std::string_view bytes() const { return m_bytes; }
    // The bytes gocryptfs reads: the password and the line feed that ends it.
    Secret asLine() const;

private:
    std::string m_bytes;
};

// Reads a descriptor to its end into wiped-on-release memory.
Secret readAllSecret(int fd);

// The old and the new password of a re-key, as -oldstdinpass -newstdinpass send them: each
// ended by a NUL byte ("old\0new\0"). Anything else is refused rather than split somewhere:
// a NUL inside the old password would otherwise re-key under the wrong text.
std::optional<std::pair<Secret, Secret>> splitPasswordPair(const Secret& input);

// Why gocryptfs could not take this password exactly as given, or empty when it can.
std::string passwordProblem(std::string_view password);

inline constexpr std::size_t kMaxPasswordBytes = 2048;

} // namespace hdiutil
