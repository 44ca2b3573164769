// Uniform type identifiers: which type a filename extension stands for, which types conform to
// which, and the type the file viewer gives a file on disk. The declarations are a fixed table
// of what macOS declares for the types the tools meet; a lookup never touches the disk except
// typeOfFile. All functions are safe to call from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sysmend::uti {

inline constexpr std::string_view kItem = "public.item";
inline constexpr std::string_view kContent = "public.content";
inline constexpr std::string_view kData = "public.data";
inline constexpr std::string_view kDirectory = "public.directory";
inline constexpr std::string_view kFolder = "public.folder";
inline constexpr std::string_view kVolume = "public.volume";
inline constexpr std::string_view kPackage = "com.apple.package";
inline constexpr std::string_view kBundle = "com.apple.bundle";
inline constexpr std::string_view kApplication = "com.apple.application";
inline constexpr std::string_view kApplicationBundle = "com.apple.application-bundle";
inline constexpr std::string_view kUnixExecutable = "public.unix-executable";
inline constexpr std::string_view kImage = "public.image";
inline constexpr std::string_view kMovie = "public.movie";
inline constexpr std::string_view kAudio = "public.audio";
inline constexpr std::string_view kArchive = "public.archive";
inline constexpr std::string_view kEmailMessage = "public.email-message";
inline constexpr std::string_view kMailbox = "com.apple.mail.mbox";
inline constexpr std::string_view kPropertyList = "com.apple.property-list";
inline constexpr std::string_view kSafariExtension = "com.apple.safari.extension";
inline constexpr std::string_view kText = "public.text";
inline constexpr std::string_view kPlainText = "public.plain-text";

// The preferred type for a filename extension (given without the dot, compared ignoring ASCII
// case): the first declared type for it that conforms to `conformingTo` (any type when empty).
// "" gives "public.data". Without such a type the answer is a dynamic identifier, "dyn.a"
// followed by an encoding of the extension as given: the same extension always gives the same
// identifier, and different extensions give different ones.
// "pkg" is declared twice: preferred, it is the flat installer archive (a file); constrained
// to "public.directory" it is the installer package folder.
std::string preferredIdentifierForExtension(std::string_view ext,
                                            std::string_view conformingTo = {});

// Whether `type` is `parent` or declares it among its ancestors. Dynamic types conform only to
// themselves, "public.data" and "public.item"; an undeclared type only to itself.
bool conformsTo(std::string_view type, std::string_view parent);

// Whether a folder with this extension is a package (shown and handled as one file): some type
// declared for the extension conforms to "com.apple.package". Frameworks are bundles, not
// packages.
bool isPackageExtension(std::string_view ext);

// The type of the item at a volume path, as the file viewer reports it: nullopt when nothing
// is there; "public.volume" for "/"; for a folder, the folder type declared for its extension
// (a package or bundle type) or "public.folder"; for anything else, the data type of its
// extension, "public.data" without an extension, or "public.unix-executable" for an
// extensionless file with an execute bit. A symbolic link has its target's type, or, when the
// target is missing, the type its own name's extension gives.
std::optional<std::string> typeOfFile(std::string_view volumePath);

}  // namespace sysmend::uti
