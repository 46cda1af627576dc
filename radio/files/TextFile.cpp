#include "radio/files/TextFile.h"

#include "radio/files/InputError.h"

#include <cerrno>
#include <fstream>
#include <system_error>

namespace Radio {

std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what) {
    const Place whole{file.string(), 0};
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
        throw InputError(whole, "is a directory, expected " + what);
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string text(most + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream.is_open() || stream.bad()) {
        throw InputError(whole, "cannot be read: " + std::generic_category().message(errno));
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

} // namespace Radio
