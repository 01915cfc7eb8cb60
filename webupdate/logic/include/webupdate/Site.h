// The update site, as the settings name it.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

class HTTPClass;

/// Opens `http` to the site, with the user's credentials. False on failure, without a message.
bool OpenSite(HTTPClass& http);

/// The path of the catalogue on the site.
std::string CataloguePath();

/// The path of a file that the catalogue names: it lies in the same folder.
std::string SitePath(std::string_view name);

/// Asks the open `http` for a text of the site, which must answer itself. Empty after a message, and when
/// the text is empty.
std::string FetchText(HTTPClass& http, const std::string& path);

}  // namespace tarnwick
