// The signature file end to end: the input as a .cx file (almost always refused by the
// decryption), then the input as the archive inside a correctly encrypted file, through the
// decoder and the JSON printer of `sysmend-cli signatures dump`.
#include <cstdint>
#include <cstdlib>

#include "adware/nsdata_aes.h"
#include "adware/signature_database.h"
#include "adware/signature_loader.h"
#include "platform/named_exception.h"

namespace {

using namespace sysmend;

// Counts the nodes of a value as a tree up to a budget, so that a shared-object bomb is not
// printed.
std::size_t treeSize(const plist::Value& value, std::size_t budget) {
    std::size_t size = 1;
    if (const plist::Array* elements = value.asArray()) {
        for (const plist::Value& element : *elements) {
            if (size > budget)
                break;
            size += treeSize(element, budget - size);
        }
    } else if (const plist::Dictionary* entries = value.asDictionary()) {
        for (const auto& entry : *entries) {
            if (size > budget)
                break;
            size += treeSize(entry.second, budget - size);
        }
    }
    return size;
}

void load(const Data& contents) {
    try {
        const plist::Value database = decodeSignatureFile(contents);
        if (database.isNull())
            std::abort();  // nil must raise, never come out
        if (treeSize(database, 100000) <= 100000)
            signatureDatabaseToJson(database).dump(2, ' ', false,
                                                   nlohmann::json::error_handler_t::strict);
    } catch (const NamedException& e) {
        if (e.name() != "error-code-1000")
            std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Data input(data, data + size);
    load(input);
    xxffucckxx::initialize();
    load(*stringToData(input, *xxs_su->key));
    return 0;
}
