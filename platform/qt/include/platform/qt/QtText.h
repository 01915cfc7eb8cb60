// Between the program's text and what a window shows: the one conversion there is.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace tarnwick::qt {

/// Windows-1252 to what Qt shows. CR LF becomes the line feed that Qt's widgets break lines at.
QString Show(std::string_view text);

/// The name of a file to what Qt shows: UTF-8 where it is that, else by the code page.
QString ShowName(std::string_view name);

/// What a user typed or chose, as Windows-1252; a character that it lacks becomes "?".
std::string Read(const QString& shown);

}  // namespace tarnwick::qt
