#include "radio/recording/Compared.h"

#include "radio/recording/RecordingWords.h"

#include <array>

namespace Radio::Recordings {

namespace {

/** An observer belongs to a handler, and that to nothing. */
constexpr int longestOwnership = 4;

/** Which of the words a, b, c and d of a record count, as letters. */
struct Words {
    const char* arguments;
    const char* answers;
};

Words wordsOf(Kind kind) {
    switch (kind) {
    case Kind::construct:
    case Kind::phase:
    case Kind::callbackPhase:
    case Kind::setTx:
    case Kind::setRx:
    case Kind::setRf:
    case Kind::compensationCarrier:
    case Kind::cancel:
    case Kind::driverWrite:
    case Kind::driverWriteBuffer:
    case Kind::rauTx:
    case Kind::rauRx:
    case Kind::observerTold:
        return {"ab", ""};
    case Kind::temperature:
    case Kind::finished:
    case Kind::moduleRegisterC:
    case Kind::temperatureRegister:
    case Kind::traceLevel:
    case Kind::traceMessage:
        return {"a", ""};
    case Kind::callbackRegister:
        return {"abc", ""};
    case Kind::driverRead:
        return {"b", "a"};
    case Kind::tableLinear:
        return {"a", "b"};
    case Kind::tableBilinear:
        return {"ab", "c"};
    case Kind::driverLookup:
    case Kind::variableAddress:
        return {"", "ab"};
    case Kind::variableGet:
        return {"", "abc"};
    case Kind::tableLookup:
    case Kind::brokerLookup:
    case Kind::brokerGet:
        return {"", "a"};
    default:
        return {"", ""};
    }
}

/** What a record has in its bytes when it returned is an argument. */
bool hasBytesAsArgument(const Record& record) {
    return record.outcome == Outcome::returned && record.kind != Kind::finished;
}

std::uint64_t mixed(std::uint64_t numbers, std::string_view text) {
    std::uint64_t result = Recordings::mixed(numbers, text.size());
    for (const char character : text) {
        result = Recordings::mixed(result, static_cast<unsigned char>(character));
    }
    return result;
}

std::uint64_t mixed(std::uint64_t numbers, const Record& record, const char* letters) {
    const std::array<std::int32_t, 4> words{record.a, record.b, record.c, record.d};
    for (const char* letter = letters; *letter != '\0'; ++letter) {
        numbers = Recordings::mixed(
            numbers, static_cast<std::uint32_t>(words.at(static_cast<std::size_t>(*letter - 'a'))));
    }
    return numbers;
}

std::uint64_t identityOf(const RecordingFile& file, const Object& object, int steps) {
    const auto kind = static_cast<std::uint64_t>(object.kind);
    const auto first = static_cast<std::uint32_t>(object.first);
    const auto second = static_cast<std::uint32_t>(object.second);
    switch (object.kind) {
    case ObjectKind::module:
    case ObjectKind::compensation:
        return Recordings::mixed(kind, first);
    case ObjectKind::callback:
        return Recordings::mixed(mixed(kind, object.name), first);
    case ObjectKind::observer:
    case ObjectKind::observerC:
    case ObjectKind::temperatureObserver: {
        const Object* const owner = steps > 0 ? ownerOf(file, object) : nullptr;
        const std::uint64_t owned = owner != nullptr ? identityOf(file, *owner, steps - 1) : 0;
        return Recordings::mixed(Recordings::mixed(kind, owned), second);
    }
    case ObjectKind::sourceFile:
        return kind;
    default:
        return mixed(kind, object.name);
    }
}

} // namespace

std::uint64_t mixed(std::uint64_t numbers, std::uint64_t another) {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15U;
    const std::uint64_t both = (numbers ^ another) * spread + another;
    return both ^ both >> 29U;
}

Comparing::Comparing(const RecordingFile& file) : m_file(file) {
    m_identities.reserve(file.objects().size());
    for (const Object& object : file.objects()) {
        m_identities.push_back(identityOf(file, object, longestOwnership));
    }
}

Compared Comparing::of(const Record& record) const {
    const Words words = wordsOf(record.kind);
    Compared compared;
    const std::uint64_t identity =
        record.object != nullptr
            ? m_identities[static_cast<std::size_t>(record.object - m_file.objects().data())]
            : 0;
    compared.rough =
        Recordings::mixed(Recordings::mixed(1, static_cast<std::uint64_t>(record.kind)), identity);
    compared.full = mixed(compared.rough, record, words.arguments);
    if (hasBytesAsArgument(record)) {
        compared.full = mixed(compared.full, record.bytes);
    }
    compared.outcome = mixed(compared.full, record, words.answers);
    compared.outcome = Recordings::mixed(compared.outcome, static_cast<std::uint64_t>(record.outcome));
    if (!hasBytesAsArgument(record)) {
        compared.outcome = mixed(compared.outcome, record.bytes);
    }
    if (!isIncoming(record.kind) && record.kind != Kind::variableContent) {
        compared.outcome = Recordings::mixed(compared.outcome, static_cast<std::uint32_t>(record.code));
    }
    return compared;
}

bool isLookup(const Record& record) {
    return record.kind == Kind::driverLookup || record.kind == Kind::tableLookup ||
           record.kind == Kind::variableGet || record.kind == Kind::variableAddress ||
           record.kind == Kind::brokerLookup || record.kind == Kind::brokerGet;
}

bool isFound(const Record& record) {
    return isLookup(record) && record.a != 0;
}

} // namespace Radio::Recordings
