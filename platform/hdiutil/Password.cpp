#include "Password.h"

#include "platform/Process.h"

#include <cerrno>
#include <unistd.h>

namespace hdiutil {

Secret::Secret(Secret&& other) noexcept : m_bytes(std::move(other.m_bytes)) {
    platform::wipe(other.m_bytes);
}

Secret& Secret::operator=(Secret&& other) noexcept {
    if (this != &other) {
        platform::wipe(m_bytes);
        m_bytes = std::move(other.m_bytes);
        platform::wipe(other.m_bytes);
    }
    return *this;
}

Secret::~Secret() { platform::wipe(m_bytes); }

Secret Secret::asLine() const {
    std::string line;
    line.reserve(m_bytes.size() + 1);
    line.append(m_bytes);
    line.push_back('\n');
    return Secret(std::move(line));
}

Secret readAllSecret(int fd) {
    // Reserve up front so that growing never leaves an unwiped copy behind.
    std::string data;
    data.reserve(64 * 1024);
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0) {
            if (data.size() + static_cast<std::size_t>(n) > data.capacity()) {
                std::string larger;
                larger.reserve(data.capacity() * 2 + static_cast<std::size_t>(n));
                larger.append(data);
                platform::wipe(data);
                data.swap(larger);
            }
            data.append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    platform::wipe(buffer, sizeof buffer);
    return Secret(std::move(data));
}

std::optional<std::pair<Secret, Secret>> splitPasswordPair(const Secret& input) {
    const std::string_view bytes = input.bytes();
    const std::size_t first = bytes.find('\0');
    if (first == std::string_view::npos || bytes.find('\0', first + 1) != bytes.size() - 1)
        return std::nullopt;
    return std::pair(Secret(std::string(bytes.substr(0, first))),
                     Secret(std::string(bytes.substr(first + 1, bytes.size() - first - 2))));
}

std::string passwordProblem(std::string_view password) {
    if (password.empty())
        return "the password is empty";
    if (password.find('\n') != std::string_view::npos)
        return "the password contains a line break, which gocryptfs cannot take";
    if (password.find('\0') != std::string_view::npos)
        return "the password contains a NUL character, which gocryptfs cannot take";
    if (password.size() > kMaxPasswordBytes)
        return "the password is longer than " + std::to_string(kMaxPasswordBytes) + " bytes";
    return {};
}

} // namespace hdiutil
