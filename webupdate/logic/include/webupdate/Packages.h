// Packages fetched from the update site into the firmware folder, and deleted there.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "webupdate/Catalogue.h"

namespace tarnwick {

class HTTPClass;

/// The name under which the site offers the package.
std::string FileNameOf(const FileEntry& entry);

/// Puts a package and its note into `folder`, both with the date of the catalogue where that is one, and
/// marks the entry as local. On an error both files are as they were, and so is the entry. A program killed
/// meanwhile has changed the note at most, which nobody looks at without its package.
std::error_code SavePackage(const std::filesystem::path& folder, FileEntry& entry, std::string_view content);

/// Fetches the package of `entry` and saves it, unless what came is a web page or has a signature
/// that does not fit. True when it is in the
/// folder; false after a message, and without one where no session opens or the answer is empty.
bool DownloadPackage(HTTPClass& http, const std::filesystem::path& folder, FileEntry& entry);

/// Copies the package at `path` into `folder` under its own name, unless its signature does not fit. Asks
/// before it replaces a package of that name, whose note goes with it. True when it is in the folder; false
/// after a message or a No.
bool BringPackage(const std::filesystem::path& folder, const std::filesystem::path& path);

/// Deletes the very file of `entry`, and the note beside it where no other package has it. True when the
/// package has gone; what could not be deleted is told.
bool RemovePackage(const std::filesystem::path& folder, FileEntry& entry);

}  // namespace tarnwick
