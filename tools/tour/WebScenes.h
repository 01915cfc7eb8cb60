// The scenes in the web update window: opened without the site, then a package fetched and removed.
#pragma once

#include <QProcess>
#include <filesystem>

#include "Director.h"

namespace tarnwick::tour {

/// The sample update site, served by nginx from its start to the end of this object.
class SampleSite {
 public:
  /// `folder` holds "site" and takes what nginx writes.
  SampleSite(QString configuration, QString folder);
  ~SampleSite();
  /// True when the site answers.
  bool Start();

 private:
  QString mConfiguration;
  QString mFolder;
  QProcess mServer;
};

/// From the page with the packages and back there. `folder` is the firmware folder.
void RehearseWebUpdate(Director& director, SampleSite& site, const std::filesystem::path& folder);

}  // namespace tarnwick::tour
