// Between the program's text and what a window shows: the one conversion there is.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace tarnwick::qt {

/// Windows-1252 to what Qt shows. CR LF becomes the line feed that Qt's widgets break lines at.
QString Show(std::string_view text);

/// The name of a file, or a text that may hold one, to what Qt shows: UTF-8 where it is that, else by the code
/// page. CR LF becomes the line feed.
QString ShowName(std::string_view name);

/// How much of a text is shown.
struct TextBound {
  int lines = 0;
  int lineLength = 0;
};
/// The text, with an ellipsis in the place of what is beyond the bound: laying out a line takes the longer
/// the longer it is, and no window is to be taller than the screen.
QString Bounded(const QString& text, TextBound bound);

/// A text for a tool tip, which would take it for markup where it looks like that. Cut where it is long.
QString PlainTip(const QString& text);

/// What a user typed or chose, as Windows-1252; a character that it lacks becomes "?".
std::string Read(const QString& shown);

}  // namespace tarnwick::qt
