// Where the system enters a program: its words are handed to `main` in UTF-8, whatever code page the system has,
// and what it is given to read keeps every byte.
#include <fcntl.h>
#include <io.h>

#include <string>
#include <vector>

#include "win32.h"

/// The program's `main`, which no C++ may call by its name.
extern "C" int ProgramMain(int count, char** words) __asm__("main");

extern "C" int wmain(int count, wchar_t** wide) {
  std::vector<std::string> words;
  for (int i = 0; i < count; ++i) words.push_back(tarnwick::win32::ToUtf8(wide[i]));
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  constexpr int kInput = 0;
  DWORD mode = 0;
  if (::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) == 0) ::_setmode(kInput, _O_BINARY);
  const UINT before = ::GetConsoleOutputCP();
  ::SetConsoleOutputCP(CP_UTF8);
  const int status = ProgramMain(count, pointers.data());
  if (before != 0) ::SetConsoleOutputCP(before);
  return status;
}
