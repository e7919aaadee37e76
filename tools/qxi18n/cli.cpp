// Diagnostics and argument walking shared by the subcommands of the qxi18n tool.
#include "cli.hpp"

#include <cstdio>
#include <cstring>

namespace qxi18n_tool {

void report(const std::string& message)
{
    std::fflush(stdout);
    std::fprintf(stderr, "qxi18n: %s\n", message.c_str());
}

usage_error::usage_error(const std::string& command, const std::string& message)
    : std::runtime_error(command + ": " + message + " (see 'qxi18n " + command + " --help')")
{
}

arguments::arguments(int argc, char** argv, std::string command)
    : args_(argv + 1, argv + argc), command_(std::move(command))
{
}

bool arguments::end_of_options()
{
    if (operands_only_ || empty() || args_[position_] != "--")
        return false;
    operands_only_ = true;
    ++position_;
    return true;
}

bool arguments::flag(const char* short_name, const char* long_name)
{
    if (operands_only_ || empty())
        return false;
    const std::string& arg = args_[position_];
    if ((short_name != nullptr && arg == short_name) || arg == long_name) {
        ++position_;
        return true;
    }
    return false;
}

bool arguments::option(const char* short_name, const char* long_name, std::string& value)
{
    if (operands_only_ || empty())
        return false;
    const std::string& arg = args_[position_];
    const std::size_t long_length = std::strlen(long_name);
    const bool exact = arg == long_name || (short_name != nullptr && arg == short_name);
    if (exact) {
        if (position_ + 1 == args_.size())
            throw usage_error(command_, "option '" + arg + "' needs a value");
        value = args_[position_ + 1];
        position_ += 2;
        return true;
    }
    if (arg.compare(0, long_length, long_name) == 0 && arg.size() > long_length
        && arg[long_length] == '=') {
        value = arg.substr(long_length + 1);
        ++position_;
        return true;
    }
    if (short_name != nullptr && arg.size() > 2 && arg.compare(0, 2, short_name) == 0
        && arg[1] != '-') {
        value = arg.substr(2);
        ++position_;
        return true;
    }
    return false;
}

std::string arguments::operand()
{
    const std::string arg = args_.at(position_++);
    if (!operands_only_ && arg.size() > 1 && arg[0] == '-')
        throw usage_error(command_, "unknown option '" + arg + "'");
    return arg;
}

}  // namespace qxi18n_tool
