// Another platform than the stand-alone one: the contracts and no more. It writes down each argument that the
// stand-alone platform does not look at.
#ifndef TESTS_ABI_BAREPLATFORM_H
#define TESTS_ABI_BAREPLATFORM_H

#include "CModuleManager_c.h"
#include "DriverLayer.h"
#include "IInterface.h"
#include "ITemperatureHandler_c.h"

#include <functional>
#include <map>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/** Takes what is written to a message and when it is flushed. */
class MessageBuffer final : public std::streambuf {
public:
    explicit MessageBuffer(Lines& lines) : m_lines(lines) {}

    /** Forgets what has no end yet. */
    void drop() { m_text.clear(); }

    /** Is called at each character. */
    std::function<void()> atText;

private:
    int overflow(int character) override {
        if (atText) {
            atText();
        }
        if (character == '\n') {
            m_lines.push_back("text " + m_text);
            m_lines.emplace_back("newline");
            m_text.clear();
        } else {
            m_text += static_cast<char>(character);
        }
        return character;
    }
    int sync() override {
        m_lines.push_back(m_text.empty() ? "flush" : "flush before the newline");
        return 0;
    }

    Lines& m_lines;
    std::string m_text;
};

/** All that this platform knows. The library's trace objects are built before anything else of the program.
 */
struct BarePlatform {
    BarePlatform() { reset(); }

    std::map<std::string, IInterface*> interfaces;
    EDriverResult lookupCode{0};
    DriverInterface driver{};
    int channelSpacing = 100;
    int anyOtherVariable = 1;

    /** What contracts do not forbid, and the library keeps to itself. */
    bool brokerThrows = false;
    /** The broker's C view succeeds, and stores neither a handle nor a record. */
    bool brokerStoresNothing = false;

    /** Are called when a level is mapped, when a message is begun and when it is ended; may do whatever a
     * platform may do. */
    std::function<void()> atMapping;
    std::function<void()> atBeginning;
    std::function<void()> atEnd;

    /** What flat functions were handed, to be called back. */
    ModuleCallbackRecord* phaseCallback = nullptr;
    ITemperatureObserver* temperatureObserver = nullptr;

    Lines traceObjects;
    Lines messages;
    Lines modules;
    Lines flatCalls;
    Lines writes;
    std::vector<bool> removedIsNull;
    std::vector<int> reservedOfAddresses;

    /** Forgets all but the trace objects, which are built once; the driver layer is there. */
    void reset();

    MessageBuffer buffer{messages};
    std::ostream stream{&buffer};
};

BarePlatform& bare();

#endif
