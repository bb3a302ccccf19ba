#include "support/command_line.h"

namespace host {

CommandLine::CommandLine(int count, char** texts) : texts_(texts, texts + count) {}

}  // namespace host
