#include "radio/store/UserSettings.h"

#include "radio/board/TomlItem.h"
#include "radio/board/TomlText.h"
#include "radio/files/StateFolder.h"
#include "radio/files/TextFile.h"
#include "radio/text/WordError.h"

namespace Radio::Store {

namespace {

constexpr std::size_t largestFile = 65536;

std::string label(const TomlItem& store, std::string_view key) {
    constexpr std::size_t longest = 100;
    const std::optional<TomlItem> item = store.find(key);
    if (!item) {
        return {};
    }
    std::string text = item->nonEmptyText("a text");
    if (text.size() > longest || harmless(text) != text) {
        item->failExpecting("1 to 100 printable characters");
    }
    return text;
}

} // namespace

std::filesystem::path settingsFile() {
    const std::filesystem::path folder = configFolder();
    return folder.empty() ? folder : folder / "settings.toml";
}

std::optional<UserSettings> readUserSettings(const std::filesystem::path& file) {
    std::error_code none;
    if (file.empty() || !std::filesystem::exists(file, none)) {
        return std::nullopt;
    }
    const std::string text = readTextFile(file, largestFile, "a settings file");
    if (text.size() > largestFile) {
        throw InputError({file, 0}, "has more than 64 KiB, expected a settings file");
    }
    const toml::table table = parseToml(text, file);
    const TomlItem root(table, "", {file, 0});
    root.entries({"store"});
    const std::optional<TomlItem> store = root.find("store");
    if (!store) {
        return std::nullopt;
    }
    store->entries({"url", "station", "operator"});
    UserSettings settings;
    const std::optional<TomlItem> url = store->find("url");
    try {
        settings.address = addressFrom(url ? url->text() : "default");
    } catch (const WordError& error) {
        (url ? *url : *store).fail(error.what());
    }
    settings.station = label(*store, "station");
    settings.operatorName = label(*store, "operator");
    return settings;
}

} // namespace Radio::Store
