#pragma once

#include "Ambrel/Home/NewFolders.h"
#include "Manager/Operations/Adopting.h"

namespace korvane {

/// An application for an instance that is being made, of a program that becomes one where it is
/// none. Unless keep() is called, what was made of it is taken away again, but where another
/// instance has come to need it meanwhile.
class ApplicationForInstance {
public:
    /// Throws what adopt() throws.
    ApplicationForInstance(const std::string& program, const ambrel::UserPlaces& user,
                           const ambrel::Environment& environment);
    ApplicationForInstance(const ApplicationForInstance&) = delete;
    ApplicationForInstance& operator=(const ApplicationForInstance&) = delete;
    ~ApplicationForInstance();

    const Adopted& adopted() const { return adopted_; }
    void keep() noexcept;

private:
    const ambrel::UserPlaces& user_;
    const ambrel::Environment& environment_;
    ambrel::NewFolders folders_;
    Adopted adopted_;
    bool isKept_ = false;
};

} // namespace korvane
