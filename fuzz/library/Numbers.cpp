#include "Numbers.h"

#include <array>

namespace {

constexpr std::array<std::int32_t, 16> remarkable{0,   1,    -1,     lowest, highest, 500,    499,     2,
                                                  250, 3000, 140000, 1000,   -140000, 999999, 4000000, -4000};

} // namespace

std::int32_t anyNumber(Bytes& bytes) {
    const std::uint32_t how = bytes.byte();
    if (how < 128) {
        return static_cast<std::int32_t>(how) - 32;
    }
    return how < 224 ? remarkable[how % remarkable.size()] : static_cast<std::int32_t>(bytes.word());
}

std::int64_t anyFrequency(Bytes& bytes) {
    const std::uint32_t how = bytes.byte();
    if (how < 160) {
        return 17'000'000U + how * 12'500U + bytes.byte();
    }
    if (how < 200) {
        return static_cast<std::uint32_t>(remarkable[how % remarkable.size()]);
    }
    const std::int64_t beyond32Bits = how < 240 ? 0 : how - 239;
    return (beyond32Bits << 32U) + bytes.word();
}

std::int32_t anyTemperature(Bytes& bytes) {
    const std::uint32_t how = bytes.byte();
    return how < 240 ? static_cast<std::int32_t>(how) - 80 : anyNumber(bytes);
}

double anyFactor(Bytes& bytes) {
    using Limits = std::numeric_limits<double>;
    const std::uint32_t how = bytes.byte();
    if (how < 224) {
        return static_cast<double>(how) / 224.0;
    }
    constexpr std::array<double, 4> strange{Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(),
                                            1e-300};
    return how < 232 ? strange[how % strange.size()]
                     : static_cast<double>(static_cast<std::int32_t>(bytes.word())) / 65536.0;
}
