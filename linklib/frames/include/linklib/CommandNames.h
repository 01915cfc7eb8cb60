// The names of the protocol's commands, as docs/link-protocol.md has them: the one list.
#pragma once

#include <array>
#include <string_view>

#include "linklib/Frame.h"

namespace tarnwick::wire {

struct CommandName {
  Command command;
  std::string_view name;
};

inline constexpr std::array<CommandName, 17> kCommandNames{{{Command::Identify, "Identify"},
                                                            {Command::Lock, "Lock"},
                                                            {Command::Speed, "Speed"},
                                                            {Command::Times, "Times"},
                                                            {Command::State, "State"},
                                                            {Command::Model, "Model"},
                                                            {Command::Revision, "Revision"},
                                                            {Command::BootRevision, "BootRevision"},
                                                            {Command::BootVersion, "BootVersion"},
                                                            {Command::Enter, "Enter"},
                                                            {Command::Start, "Start"},
                                                            {Command::End, "End"},
                                                            {Command::Check, "Check"},
                                                            {Command::Read, "Read"},
                                                            {Command::Write1, "Write1"},
                                                            {Command::Write2, "Write2"},
                                                            {Command::Write4, "Write4"}}};

}  // namespace tarnwick::wire
