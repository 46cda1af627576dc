// The phases of the frequency module, as a module manager that reads them from the library finds them.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

TEST(PhaseFilter, Holds11And5And20InThatOrder) {
    // Private in C++, but the object's place and layout are what others are built against.
    const void* const filter = dlsym(RTLD_DEFAULT, "_ZN16FrequencyHandler14m_pPhaseFilterE");
    ASSERT_NE(filter, nullptr);
    EXPECT_THAT((*static_cast<const std::array<unsigned long, 3>*>(filter)),
                testing::ElementsAre(11U, 5U, 20U));
}
