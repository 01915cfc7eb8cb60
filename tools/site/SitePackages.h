// What the site offers of one folder of the sources.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "SitePlan.h"

namespace tarnwick::site {

/// The packages of `folder`, with their notes, signed where there is a key.
void AddPackages(SitePlan& plan, const std::filesystem::path& folder, char tag, const Signing& signing);

/// The names of what lies in `folder`, in order.
std::vector<std::string> NamesIn(const std::filesystem::path& folder);

/// The files of the program in `folder`, with the versions that its "versions.txt" names.
void AddProgramFiles(SitePlan& plan, const std::filesystem::path& folder);

}  // namespace tarnwick::site
