#include "platform/uti.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <unordered_map>
#include <vector>

#include "platform/path.h"
#include "platform/volume.h"

namespace sysmend::uti {
namespace {

// One declared type: its identifier, the types it conforms to and the filename extensions it
// claims (lower case), both blank-separated. Where two types claim an extension, the one
// declared first is preferred.
struct Declaration {
    std::string_view identifier;
    std::string_view conformsTo;
    std::string_view extensions;
};

constexpr Declaration kDeclarations[] = {
    // The physical hierarchy.
    {"public.item", "", ""},
    {"public.content", "", ""},
    {"public.composite-content", "public.content", ""},
    {"public.data", "public.item", ""},
    {"public.directory", "public.item", ""},
    {"public.folder", "public.directory", ""},
    {"public.volume", "public.folder", ""},
    {"public.symlink", "public.item", ""},
    {"com.apple.package", "public.directory", ""},
    {"com.apple.bundle", "public.directory", ""},
    {"public.executable", "", ""},
    {"public.unix-executable", "public.data public.executable", ""},
    {"com.apple.application", "public.executable", ""},

    // Bundles and packages.
    {"com.apple.application-bundle", "com.apple.application com.apple.bundle com.apple.package",
     "app"},
    {"com.apple.xpc-service", "com.apple.bundle com.apple.package", "xpc"},
    {"com.apple.application-and-system-extension", "com.apple.xpc-service", "appex"},
    {"com.apple.framework", "com.apple.bundle", "framework"},
    {"com.apple.kernel-extension", "com.apple.bundle com.apple.package", "kext"},
    {"com.apple.plugin", "com.apple.bundle com.apple.package", "plugin"},
    {"com.apple.generic-bundle", "com.apple.bundle com.apple.package", "bundle"},
    {"com.apple.systempreference.prefpane", "com.apple.bundle com.apple.package", "prefpane"},
    {"com.apple.quicklook-generator", "com.apple.bundle com.apple.package", "qlgenerator"},
    {"com.apple.metadata-importer", "com.apple.bundle com.apple.package", "mdimporter"},
    {"com.apple.installer-package-archive", "public.data public.archive", "pkg mpkg"},
    {"com.apple.installer-package", "com.apple.bundle com.apple.package", "pkg"},
    {"com.apple.rtfd", "com.apple.package public.composite-content", "rtfd"},
    {"com.apple.safari.extension", "public.data", "safariextz"},

    // Text.
    {"public.text", "public.data public.content", ""},
    {"public.plain-text", "public.text", "txt text"},
    {"public.utf8-plain-text", "public.plain-text", ""},
    {"public.log", "public.item", ""},
    {"com.apple.log", "public.plain-text public.log", "log"},
    {"com.apple.crashreport", "public.utf8-plain-text public.log", "crash"},
    {"com.apple.hangreport", "public.utf8-plain-text public.log", "hang"},
    {"com.apple.spinreport", "public.utf8-plain-text public.log", "spin"},
    {"com.apple.panicreport", "public.utf8-plain-text public.log", "panic"},
    {"public.xml", "public.text", "xml"},
    {"public.json", "public.text", "json"},
    {"public.html", "public.text", "html htm"},
    {"public.rtf", "public.text", "rtf"},
    {"public.delimited-values-text", "public.text", ""},
    {"public.comma-separated-values-text", "public.delimited-values-text", "csv"},
    {"public.source-code", "public.plain-text", ""},
    {"public.script", "public.source-code", ""},
    {"public.shell-script", "public.script", "sh command"},
    {"public.python-script", "public.script", "py"},
    {"public.ruby-script", "public.script", "rb"},
    {"com.netscape.javascript-source", "public.source-code public.executable", "js"},
    {"public.c-source", "public.source-code", "c"},
    {"public.c-header", "public.source-code", "h"},
    {"public.c-plus-plus-source", "public.source-code", "cpp cp cc cxx c++"},
    {"public.objective-c-source", "public.source-code", "m"},
    {"public.swift-source", "public.source-code", "swift"},
    {"com.adobe.pdf", "public.data public.composite-content", "pdf"},

    // Property lists.
    {"com.apple.property-list", "public.data", "plist"},
    {"com.apple.xml-property-list", "com.apple.property-list public.xml", ""},
    {"com.apple.binary-property-list", "com.apple.property-list", ""},

    // Images.
    {"public.image", "public.data public.content", ""},
    {"public.png", "public.image", "png"},
    {"public.jpeg", "public.image", "jpg jpeg jpe"},
    {"com.compuserve.gif", "public.image", "gif"},
    {"public.tiff", "public.image", "tiff tif"},
    {"public.heif-standard", "public.image", ""},
    {"public.heic", "public.heif-standard", "heic"},
    {"public.heif", "public.heif-standard", "heif"},
    {"com.microsoft.bmp", "public.image", "bmp"},
    {"com.apple.icns", "public.image", "icns"},
    {"com.microsoft.ico", "public.image", "ico"},
    {"org.webmproject.webp", "public.image", "webp"},
    {"public.svg-image", "public.image", "svg"},
    {"com.adobe.photoshop-image", "public.image", "psd"},

    // Movies and sound. MPEG-4 audio conforms to the MPEG-4 movie type as well.
    {"public.audiovisual-content", "public.data public.content", ""},
    {"public.movie", "public.audiovisual-content", ""},
    {"public.video", "public.movie", ""},
    {"public.audio", "public.audiovisual-content", ""},
    {"com.apple.quicktime-movie", "public.movie", "mov qt"},
    {"public.mpeg-4", "public.movie", "mp4 mpg4"},
    {"com.apple.m4v-video", "public.movie", "m4v"},
    {"public.avi", "public.movie", "avi"},
    {"public.mpeg", "public.movie", "mpg mpeg"},
    {"org.matroska.mkv", "public.movie", "mkv"},
    {"com.microsoft.windows-media-wmv", "public.movie", "wmv"},
    {"public.3gpp", "public.movie", "3gp 3gpp"},
    {"org.webmproject.webm", "public.movie", "webm"},
    {"public.mp3", "public.audio", "mp3"},
    {"public.mpeg-4-audio", "public.mpeg-4 public.audio", ""},
    {"com.apple.m4a-audio", "public.mpeg-4-audio", "m4a"},
    {"public.aac-audio", "public.audio", "aac"},
    {"com.microsoft.waveform-audio", "public.audio", "wav wave"},
    {"public.aifc-audio", "public.audio", "aifc"},
    {"public.aiff-audio", "public.aifc-audio", "aiff aif"},
    {"org.xiph.flac", "public.audio", "flac"},
    {"com.apple.coreaudio-format", "public.audio", "caf"},
    {"public.midi-audio", "public.audio", "mid midi"},

    // Archives. A disk image is not one.
    {"public.archive", "", ""},
    {"public.zip-archive", "public.data public.archive", "zip"},
    {"com.sun.java-archive", "public.zip-archive", "jar"},
    {"org.gnu.gnu-zip-archive", "public.data public.archive", "gz gzip"},
    {"org.gnu.gnu-zip-tar-archive", "org.gnu.gnu-zip-archive", "tgz"},
    {"public.tar-archive", "public.data public.archive", "tar"},
    {"public.bzip2-archive", "public.data public.archive", "bz2 bzip2"},
    {"org.tukaani.xz-archive", "public.data public.archive", "xz"},
    {"org.7-zip.7-zip-archive", "public.data public.archive", "7z"},
    {"com.rarlab.rar-archive", "public.data public.archive", "rar"},
    {"com.apple.xar-archive", "public.data public.archive", "xar"},
    {"com.apple.disk-image-udif", "public.data", "dmg"},

    // Mail.
    {"public.message", "", ""},
    {"public.email-message", "public.message", ""},
    {"com.apple.mail.email", "public.data public.email-message", "eml"},
    {"com.apple.mail.emlx", "public.data public.email-message", "emlx"},
    {"com.apple.mail.mbox", "public.data", "mbox"},
};

std::vector<std::string_view> words(std::string_view list) {
    std::vector<std::string_view> out;
    while (!list.empty()) {
        std::size_t end = list.find(' ');
        if (end != 0)
            out.push_back(list.substr(0, end));
        if (end == std::string_view::npos)
            break;
        list.remove_prefix(end + 1);
    }
    return out;
}

struct Registry {
    std::unordered_map<std::string_view, std::vector<std::string_view>> parents;
    std::unordered_map<std::string_view, std::vector<std::string_view>> byExtension;

    Registry() {
        for (const Declaration& d : kDeclarations) {
            parents[d.identifier] = words(d.conformsTo);
            for (std::string_view ext : words(d.extensions)) {
                byExtension[ext].push_back(d.identifier);
            }
        }
    }
};

const Registry& registry() {
    static const Registry r;
    return r;
}

const std::vector<std::string_view>* typesForExtension(std::string_view ext) {
    const std::string lower = path::lowercased(ext);
    const auto& map = registry().byExtension;
    auto it = map.find(lower);
    return it == map.end() ? nullptr : &it->second;
}

// Five bits per letter over an alphabet without easily confused letters, after "dyn.a".
std::string dynamicIdentifier(std::string_view ext) {
    static constexpr std::string_view kAlphabet = "abcdefghkmnpqrstuvwxyz0123456789";
    const std::string tag = "?0=7:1=" + std::string(ext);
    std::string out = "dyn.a";
    unsigned buffer = 0;
    int bits = 0;
    for (unsigned char c : tag) {
        buffer = (buffer << 8) | c;
        bits += 8;
        while (bits >= 5) {
            bits -= 5;
            out += kAlphabet[(buffer >> bits) & 31];
        }
    }
    if (bits > 0)
        out += kAlphabet[(buffer << (5 - bits)) & 31];
    return out;
}

bool isDynamic(std::string_view type) {
    return type.substr(0, 4) == "dyn.";
}

// Follows a chain of symbolic links inside the volume: absolute targets are volume paths.
// Gives the final host path, or nullopt for a dangling link or a loop.
std::optional<std::string> resolvedHostPath(const std::string& volumePath) {
    const Volume& volume = Volume::current();
    std::string current = volumePath;
    for (int hops = 0; hops < 32; ++hops) {
        std::string host = volume.hostPath(current);
        struct stat st {};
        if (::lstat(host.c_str(), &st) != 0)
            return std::nullopt;
        if (!S_ISLNK(st.st_mode))
            return host;
        std::array<char, 4096> buf{};
        ssize_t n = ::readlink(host.c_str(), buf.data(), buf.size() - 1);
        if (n <= 0)
            return std::nullopt;
        std::string_view target(buf.data(), static_cast<std::size_t>(n));
        current = path::standardized(
            target.front() == '/'
                ? target
                : path::appending(path::deletingLastPathComponent(current), target));
    }
    return std::nullopt;
}

std::string typeOfNonFolder(std::string_view name, const struct stat& st) {
    std::string ext = path::pathExtension(name);
    if (!ext.empty())
        return preferredIdentifierForExtension(ext, kData);
    bool executable = S_ISREG(st.st_mode) && (st.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
    return std::string(executable ? kUnixExecutable : kData);
}

}  // namespace

std::string preferredIdentifierForExtension(std::string_view ext, std::string_view conformingTo) {
    if (ext.empty())
        return std::string(kData);
    if (const auto* types = typesForExtension(ext)) {
        for (std::string_view type : *types) {
            if (conformingTo.empty() || conformsTo(type, conformingTo))
                return std::string(type);
        }
    }
    return dynamicIdentifier(ext);
}

bool conformsTo(std::string_view type, std::string_view parent) {
    if (type == parent)
        return true;
    if (isDynamic(type))
        return parent == kData || parent == kItem;
    const auto& parents = registry().parents;
    auto it = parents.find(type);
    if (it == parents.end())
        return false;
    for (std::string_view p : it->second) {
        if (conformsTo(p, parent))
            return true;
    }
    return false;
}

bool isPackageExtension(std::string_view ext) {
    const auto* types = typesForExtension(ext);
    if (types == nullptr)
        return false;
    for (std::string_view type : *types) {
        if (conformsTo(type, kPackage))
            return true;
    }
    return false;
}

std::optional<std::string> typeOfFile(std::string_view volumePath) {
    const std::string standard = path::standardized(volumePath);
    const std::string host = Volume::current().hostPath(standard);
    struct stat st {};
    if (::lstat(host.c_str(), &st) != 0)
        return std::nullopt;
    if (standard == "/")
        return std::string(kVolume);

    std::string name = path::lastPathComponent(standard);
    if (S_ISLNK(st.st_mode)) {
        std::optional<std::string> target = resolvedHostPath(standard);
        if (!target || ::stat(target->c_str(), &st) != 0)
            return typeOfNonFolder(name, st);
        name = path::lastPathComponent(*target);
    }
    if (!S_ISDIR(st.st_mode))
        return typeOfNonFolder(name, st);

    std::string ext = path::pathExtension(name);
    if (!ext.empty()) {
        std::string declared = preferredIdentifierForExtension(ext, kDirectory);
        if (!isDynamic(declared))
            return declared;
    }
    return std::string(kFolder);
}

}  // namespace sysmend::uti
