#ifndef RADIO_LABORATORY_DRAWS_H
#define RADIO_LABORATORY_DRAWS_H

#include <cstdint>
#include <string_view>

namespace Radio::Laboratory {

/**
 * Random numbers for one quantity of one transmitter. They depend on nothing but the seed, the number of the
 * transmitter and the name of the quantity: not on who was drawn before, nor on what else is drawn. They are
 * the same on every machine.
 */
class Draws {
public:
    Draws(std::uint64_t seed, std::uint64_t transmitter, std::string_view quantity);

    /** 64 bits. */
    std::uint64_t bits();
    /** From 0 to below 1, in steps of 2^-53. */
    double uniform();
    /** Nearly normal, with mean 0 and variance 1: twelve uniform numbers, less 6, as the noise of a modelled
     * detector is. Never farther off than 6. */
    double normal();

private:
    std::uint64_t m_state;
};

} // namespace Radio::Laboratory

#endif
