// Every carrier with every board: see run, beside this file.

#include "ParameterSets.h"
#include "PlanCheck.h"
#include "Report.h"
#include "Sweep.h"
#include "radio/text/Numbers.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace Carriers;

namespace {

constexpr const char* usage =
    "usage: all_carriers [--stride KHZ] [--ends] [BOARD...]\n"
    "  Holds the frequency plan of the microwave board against the model, for every carrier of 32 bits, "
    "with\n"
    "  the parameters of these boards; without any, with those of all boards and --ends.\n"
    "  --ends         and with the ends of each parameter's range\n"
    "  --stride KHZ   every KHZ-th carrier alone\n";

enum Exit : int { same = 0, different = 1, cannotBeDone = 2 };

struct Order {
    bool withEnds = false;
    std::uint64_t stride = 1;
    std::vector<std::string> boards;
};

/** The files of all boards of the project, in their order. */
std::vector<std::string> allBoards() {
    std::vector<std::string> boards;
    for (const auto& entry : std::filesystem::directory_iterator(BOARDS)) {
        if (entry.path().extension() == ".toml") {
            boards.push_back(entry.path().string());
        }
    }
    std::sort(boards.begin(), boards.end());
    return boards;
}

/** What is asked for; nothing when that is not understood. */
std::optional<Order> orderOf(const std::vector<std::string_view>& words) {
    Order order;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--ends") {
            order.withEnds = true;
        } else if (words[i] == "--stride") {
            const auto stride =
                ++i < words.size() ? Radio::parseNumber<std::uint32_t>(words[i], 1) : std::nullopt;
            if (!stride) {
                return std::nullopt;
            }
            order.stride = *stride;
        } else if (words[i].substr(0, 1) == "-") {
            return std::nullopt;
        } else {
            order.boards.emplace_back(words[i]);
        }
    }
    if (order.boards.empty()) {
        order.withEnds = true;
        order.boards = allBoards();
    }
    return order;
}

ParameterSets setsOf(const Order& order) {
    ParameterSets sets;
    addStart(sets);
    for (const std::string& board : order.boards) {
        if (!addBoard(sets, board)) {
            std::cout << board << " has no frequency plan: its carriers are passed on as they are\n";
        }
    }
    if (order.withEnds) {
        addEnds(sets, Parameters(ordinaryOf(sets)));
    }
    return sets;
}

int checkAll(const Order& order) {
    CarrierRange carriers;
    carriers.stride = order.stride;
    const auto check = [](const Parameters& parameters, const CarrierRange& part) {
        return firstDifference(LibraryPlan{}, parameters, part);
    };
    return checkSets(setsOf(order), carriers, check, std::cout) ? Exit::different : Exit::same;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::optional<Order> order = orderOf({argv + std::min(argc, 1), argv + argc});
        if (!order) {
            std::cerr << usage;
            return Exit::cannotBeDone;
        }
        return checkAll(*order);
    } catch (const HandlerDiffers& difference) {
        std::cout << "DIFFERENT: " << difference.what() << '\n';
        return Exit::different;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return Exit::cannotBeDone;
    }
}
