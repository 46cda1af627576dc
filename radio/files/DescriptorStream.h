#ifndef RADIO_FILES_DESCRIPTORSTREAM_H
#define RADIO_FILES_DESCRIPTORSTREAM_H

#include <array>
#include <ostream>
#include <streambuf>

namespace Radio {

/** What writes through a descriptor that is open; whoever opened it closes it. Flushing does not reach the
 * disk. */
class DescriptorBuffer : public std::streambuf {
public:
    DescriptorBuffer() { setp(m_waiting.data(), m_waiting.data() + m_waiting.size()); }
    void attach(int descriptor);
    int reason() const { return m_reason; }
    int signal() const { return m_signal; }

protected:
    int_type overflow(int_type character) override;
    int sync() override;

private:
    int m_descriptor = -1;
    int m_reason = 0;
    int m_signal = 0;
    /** What is no ordinary file: a pipe that nobody reads, for example. */
    bool m_mayKeepWaiting = false;
    std::array<char, 16384> m_waiting{};
};

/**
 * An output stream through a descriptor, for a file that must not be looked up by its name a second time.
 * What cannot be written makes it bad, and reason() says why.
 */
class DescriptorStream : public std::ostream {
public:
    DescriptorStream() : std::ostream(nullptr) { rdbuf(&m_buffer); }
    /** Writes there from now on. */
    void attach(int descriptor) { m_buffer.attach(descriptor); }
    /** What write() gave last in errno, 0 as long as all went well. */
    int reason() const { return m_buffer.reason(); }
    /** The signal for which a wait for a reader was given up; 0 for none. */
    int signal() const { return m_buffer.signal(); }

private:
    DescriptorBuffer m_buffer;
};

} // namespace Radio

#endif
