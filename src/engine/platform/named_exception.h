// An exception with a name and a reason, in the manner of Objective-C exceptions. Callers
// match on name(); what() is "name: reason" for logs.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace sysmend {

class NamedException : public std::exception {
  public:
    NamedException(std::string name, std::string reason)
        : name_(std::move(name)), reason_(std::move(reason)), what_(name_ + ": " + reason_) {}

    const std::string& name() const noexcept { return name_; }
    const std::string& reason() const noexcept { return reason_; }
    const char* what() const noexcept override { return what_.c_str(); }

  private:
    std::string name_;
    std::string reason_;
    std::string what_;
};

}  // namespace sysmend
