// The signature database as data: its source (resources/signatures/threats.json), the value the
// scan reads, and the encrypted file the loader reads (adware/signature_loader.h).
//
// The database is an array of threat dictionaries, walked in order. "name" is a string; the
// optional lists "launch", "launchContent", "path", "app", "extensions" and "preferences" are
// arrays of strings (a missing list matches nothing).
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "platform/plist.h"
#include "platform/values.h"

namespace sysmend {

// Checks a source document's shape and returns the database: the entries and their keys in
// the source's order, each entry's "sources" (where its facts were published) left out. The
// source is a top-level array of objects, each with a string "name"; any key besides "name",
// the six lists and "sources" is an error. On error returns nullopt and a one-line reason that
// names the entry by its index, e.g. `entry 4 ("Foo"): "launch" must be an array of strings`.
std::optional<plist::Value> signatureDatabaseFromSource(const nlohmann::ordered_json& source,
                                                        std::string* error = nullptr);

// The database encrypted as the loader reads it: a keyed archive, encrypted with the loader's
// key.
Data encryptSignatureDatabase(const plist::Value& database);

// A decoded value as JSON, for printing: strings, numbers, booleans, arrays and objects as
// they are; data as lower-case hex, dates as "2001-01-01T00:00:00Z", nil as null.
nlohmann::ordered_json signatureDatabaseToJson(const plist::Value& database);

}  // namespace sysmend
