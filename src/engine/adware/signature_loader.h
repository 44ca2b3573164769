// The loader of the signature database, the resource ".cx": AES-256-CBC ciphertext (PKCS#7,
// zero IV, key = the key string zero-padded to 32 bytes) of a keyed archive whose root is the
// database array (see adware/signature_database.h for its shape).
//
// Loading runs through a process-wide table of four operations, xxs_su, filled once by
// xxffucckxx::initialize(); every step goes through the table, never through the functions
// directly.
//
// Where the resource is found, in order:
//   1. the file given to setSignatureFile (the CLI's --signatures FILE);
//   2. ".cx" in the folder given to setResourceFolder (tests);
//   3. ".cx" in $SYSMEND_RESOURCES;
//   4. ".cx" in the first folder that exists of: <executable's folder>/../Resources (a macOS
//      bundle's Contents/Resources), <executable's folder>/../share/sysmend (installed), and
//      the build tree's resources folder (running from the build).
#pragma once

#include <optional>
#include <string>

#include "platform/plist.h"
#include "platform/values.h"

namespace sysmend {

class xxffucckxx;

// The operation table. Each member is one pointer-sized slot, in the order they are filled.
struct xxs_su_table {
    std::optional<Data> (*decrypt)(const Data& data, const std::string& key);  // slot 0: m0
    std::string (*storedString)();                                             // slot 1: m1
    plist::Value (*load)(const std::string& key, const xxffucckxx* caller);    // slot 2: _acx
    const std::string* key;  // slot 3: the address of the global holding the key string
};

// Allocated and filled by the first xxffucckxx::initialize(), never freed; null before.
extern xxs_su_table* xxs_su;

// Loads the database on construction. Short-lived: make one, take var1, let it go.
class xxffucckxx {
  public:
    // Fills xxs_su exactly once for the life of the process; later calls do nothing.
    // Thread-safe. The constructor calls it first.
    static void initialize();

    // Loads through slot 2 with the key of slot 3. Throws
    // NamedException("error-code-1000", "has bug") when the resource exists but does not
    // decrypt or decode (var1 would be nil). A missing resource is an empty database.
    xxffucckxx();

    std::string var;    // the key string
    plist::Value var1;  // the decoded database, never Null once constructed
};

// Decrypts with AES-256-CBC, PKCS#7, zero IV, the key as a C string in a 33-byte zeroed
// buffer of which 32 bytes are used. nullopt (nil) on any failure: a wrong key, bad padding,
// a length that is not a multiple of 16, empty data.
std::optional<Data> m0(const Data& data, const std::string& key);

// The 25 stored bytes read as UTF-8. Nothing depends on them.
std::string m1();

// Reads the resource (see the top of this file): an empty array when it is missing or
// unreadable, Null (nil) when it does not decrypt through slot 0 or does not decode as a keyed
// archive, else the archive's root object. caller is not used.
plist::Value _acx(const std::string& key, const xxffucckxx* caller);

// Slot 1's string.
std::string xs_g();

// What the adware start page does to get its database: a loader's var1. Throws what the
// loader throws.
plist::Value loadSignatureDatabase();

// The same steps as the loader, on the contents of a signature file already read: throws
// NamedException("error-code-1000", "has bug") when they do not decrypt and decode.
plist::Value decodeSignatureFile(const Data& contents);

// The resource folder the loader reads from now (rules 2 to 4 above; empty when none of
// rule 4's folders exists).
std::string resourceFolder();

// Overrides. An empty string removes the override. Set them before loading: they are read at
// each load, under a lock.
void setResourceFolder(std::string hostFolder);
void setSignatureFile(std::string hostPath);

}  // namespace sysmend
