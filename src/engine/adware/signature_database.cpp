#include "adware/signature_database.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <string_view>

#include "adware/nsdata_aes.h"
#include "adware/signature_loader.h"
#include "platform/keyed_archive.h"

namespace sysmend {
namespace {

constexpr std::array<std::string_view, 6> kListKeys{"launch", "launchContent", "path",
                                                    "app",    "extensions",    "preferences"};

bool isListOfStrings(const nlohmann::ordered_json& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(),
                                           [](const auto& element) { return element.is_string(); });
}

std::string iso8601(Date date) {
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(date));
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

std::string hex(const Data& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

}  // namespace

std::optional<plist::Value> signatureDatabaseFromSource(const nlohmann::ordered_json& source,
                                                        std::string* error) {
    auto fail = [error](std::string reason) -> std::optional<plist::Value> {
        if (error != nullptr)
            *error = std::move(reason);
        return std::nullopt;
    };
    if (!source.is_array())
        return fail("the top level is not an array of threats");

    plist::Array database;
    database.reserve(source.size());
    for (std::size_t index = 0; index < source.size(); ++index) {
        const nlohmann::ordered_json& entry = source[index];
        std::string label = "entry " + std::to_string(index);
        if (!entry.is_object())
            return fail(label + ": not an object");
        const auto name = entry.find("name");
        if (name == entry.end())
            return fail(label + ": no \"name\"");
        if (!name->is_string())
            return fail(label + ": \"name\" must be a string");
        // dump() quotes and escapes the name, which keeps the message on one line.
        label += " (" + name->dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + ")";

        plist::Dictionary threat;
        for (const auto& [key, value] : entry.items()) {
            if (key == "sources")
                continue;
            if (key == "name") {
                threat.set(key, value.get<std::string>());
                continue;
            }
            if (std::find(kListKeys.begin(), kListKeys.end(), key) == kListKeys.end())
                return fail(label + ": unknown key " + nlohmann::ordered_json(key).dump());
            if (!isListOfStrings(value))
                return fail(label + ": \"" + key + "\" must be an array of strings");
            plist::Array strings;
            strings.reserve(value.size());
            for (const auto& text : value)
                strings.emplace_back(text.get<std::string>());
            threat.set(key, std::move(strings));
        }
        database.emplace_back(std::move(threat));
    }
    return plist::Value(std::move(database));
}

Data encryptSignatureDatabase(const plist::Value& database) {
    xxffucckxx::initialize();
    // Encryption of a buffer in memory with a valid key cannot fail.
    return *stringToData(keyed_archive::encode(database), *xxs_su->key);
}

nlohmann::ordered_json signatureDatabaseToJson(const plist::Value& database) {
    switch (database.type()) {
        case plist::Type::Null:
        case plist::Type::Uid:
            break;
        case plist::Type::Boolean:
            return *database.asBool();
        case plist::Type::Integer:
            return *database.asInteger();
        case plist::Type::Real:
            return *database.asReal();
        case plist::Type::String:
            return *database.asString();
        case plist::Type::Data:
            return hex(*database.asData());
        case plist::Type::Date:
            return iso8601(*database.asDate());
        case plist::Type::Array: {
            nlohmann::ordered_json elements = nlohmann::ordered_json::array();
            for (const plist::Value& element : *database.asArray())
                elements.push_back(signatureDatabaseToJson(element));
            return elements;
        }
        case plist::Type::Dictionary: {
            nlohmann::ordered_json entries = nlohmann::ordered_json::object();
            for (const auto& [key, value] : *database.asDictionary())
                entries[key] = signatureDatabaseToJson(value);
            return entries;
        }
    }
    return nullptr;
}

}  // namespace sysmend
