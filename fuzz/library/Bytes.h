#ifndef FUZZ_LIBRARY_BYTES_H
#define FUZZ_LIBRARY_BYTES_H

#include <cstddef>
#include <cstdint>

/** Bytes that are taken one after the other; behind the last one there are zeros. */
class Bytes {
public:
    Bytes(const std::uint8_t* bytes, std::size_t count) : m_next(bytes), m_end(bytes + count) {}

    bool areLeft() const { return m_next != m_end; }
    std::uint32_t byte() { return areLeft() ? *m_next++ : 0U; }
    std::uint32_t word() {
        const std::uint32_t low = byte() | byte() << 8U;
        return low | byte() << 16U | byte() << 24U;
    }
    /** A number below `limit`, which is at most 256. */
    std::size_t below(std::size_t limit) { return byte() % limit; }
    template <typename List>
    const typename List::value_type& oneOf(const List& list) {
        return list[below(list.size())];
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

#endif
