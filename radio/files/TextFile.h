#ifndef RADIO_FILES_TEXTFILE_H
#define RADIO_FILES_TEXTFILE_H

#include <array>
#include <cstddef>
#include <filesystem>
#include <istream>
#include <streambuf>
#include <string>

namespace Radio {

/**
 * The content of a file; of one that is larger than `most` bytes, one byte more than these, so that the
 * caller sees it. `what` says what it should be. Throws InputError; GivenUp, when setFileWait() has been
 * given something that does not wait for ever.
 */
std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what);

/**
 * An ordinary file as a stream, for one that is larger than what is to be held in memory. Nobody waits for
 * what is none: isOrdinary() says so, and nothing is read.
 */
class OrdinaryFile {
public:
    explicit OrdinaryFile(const std::filesystem::path& file);
    OrdinaryFile(const OrdinaryFile&) = delete;
    OrdinaryFile& operator=(const OrdinaryFile&) = delete;
    ~OrdinaryFile();

    bool isOpen() const { return m_descriptor != -1; }
    bool isOrdinary() const { return m_isOrdinary; }
    /** Why it is not open, as an error number. */
    int reason() const { return m_reason; }
    /** Bad, once it cannot be read. */
    std::istream& stream() { return m_stream; }

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(const int& descriptor) : m_descriptor(descriptor) {}

    protected:
        int_type underflow() override;

    private:
        const int& m_descriptor;
        std::array<char, 65536> m_read{};
    };

    int m_descriptor;
    int m_reason;
    bool m_isOrdinary = false;
    Buffer m_buffer{m_descriptor};
    std::istream m_stream{&m_buffer};
};

} // namespace Radio

#endif
