// morvanta-remove-original: removes one item, recursively. Morvanta runs it through pkexec
// when the user's own rights do not reach far enough to take an item's original away after
// copying it into the vault; polkit asks for an administrator's consent first, with the
// message of Morvanta's action.

#include <cstdio>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc != 2 || argv[1][0] != '/') {
        std::fprintf(stderr, "usage: morvanta-remove-original /absolute/path\n");
        return 2;
    }
    const fs::path path = fs::path(argv[1]).lexically_normal();
    if (path == path.root_path()) {
        std::fprintf(stderr, "morvanta-remove-original: refusing to remove /\n");
        return 2;
    }
    std::error_code error;
    fs::remove_all(path, error);
    if (error) {
        std::fprintf(stderr, "morvanta-remove-original: %s: %s\n", path.c_str(),
                     error.message().c_str());
        return 1;
    }
    return 0;
}
