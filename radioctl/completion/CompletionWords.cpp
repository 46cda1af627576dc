#include "radioctl/completion/CompletionWords.h"

#include "radioctl/options/ExitCode.h"
#include "radioctl/options/Values.h"

#include <iostream>
#include <string_view>

namespace Radio {

bool asksForCompletionWords(int argumentCount, const char* const* arguments) {
    return argumentCount > 1 && arguments[1] == std::string_view("completion-words");
}

int printCompletionWords(const CommandLine::Parser& parser, int argumentCount, const char* const* arguments) {
    const std::string typed = argumentCount > 2 ? arguments[argumentCount - 1] : "";
    const int beforeCount = argumentCount > 2 ? argumentCount - 2 : 1;
    // Behind the first argument, as if that were the program.
    const CommandLine::Offers offers = parser.offersFor(withUnitsJoined(beforeCount, arguments + 1), typed);
    for (const CommandLine::Offers::Word& offer : offers.words) {
        std::cout << offer.word << "\t" << offer.help << "\n";
    }
    if (offers.areFiles) {
        std::cout << ":files";
        for (const std::string& ending : offers.endings) {
            std::cout << " " << ending;
        }
        std::cout << "\n";
    }
    return ExitCode::good;
}

} // namespace Radio
