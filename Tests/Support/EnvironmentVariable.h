#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace velloren {

/// Sets an environment variable, or unsets it when no value is given, and puts the former state back at the
/// end.
class EnvironmentVariable {
  public:
    EnvironmentVariable(std::string name, const std::optional<std::string>& value) : name(std::move(name)) {
        if (const char* present = std::getenv(this->name.c_str()))
            former = present;
        set(value);
    }

    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    ~EnvironmentVariable() { set(former); }

    void set(const std::optional<std::string>& value) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }

  private:
    std::string name;
    std::optional<std::string> former;
};

} // namespace velloren
