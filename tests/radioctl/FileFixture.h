#ifndef TESTS_RADIOCTL_FILEFIXTURE_H
#define TESTS_RADIOCTL_FILEFIXTURE_H

#include "BoardFileFixture.h"

#include <iterator>

namespace Radioctl {

/** Works with files of any kind in a directory of its own. */
class FileFixture : public BoardFileFixture {
protected:
    static void write(const std::string& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

} // namespace Radioctl

#endif
