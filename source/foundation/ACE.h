#pragma once
#include <cstdint>
#include <string>

/// What an entry of an access control list does.
enum class ACEType : std::uint32_t { Allow = 0, Deny = 1, MandatoryLabel = 2 };

enum class ACERights : std::uint32_t {
    GenericAll = 0,
    GenericRead = 1,
    GenericWrite = 2,
    GenericExecute = 3,
    GenericReadWriteExecute = 4,
    NoWriteUp = 5
};

enum class ACESubject : std::uint32_t {
    AuthenticatedUsers = 0,
    BuiltInUsers = 1,
    BuiltInAdministrators = 2,
    LocalSystem = 3,
    Everyone = 4,
    RestrictedCode = 5,
    LowIntegrity = 6
};

/// An entry of an access control list, inherited by objects and containers below.
class ACE {
public:
    ACE(ACEType type, ACERights rights, ACESubject subject);
    ACE(const ACE&) = default;
    ACE& operator=(const ACE&) = default;
    virtual ~ACE() = default;

    /// The entry in the Security Descriptor Definition Language: "(A;OICI;GR;;;WD)". Raises Exception
    /// for a number outside the enumerations.
    std::wstring ToString() const;

private:
    ACEType type_;
    ACERights rights_;
    ACESubject subject_;
};

/// An allow entry.
class AACE : public ACE {
public:
    AACE(ACERights rights, ACESubject subject) : ACE(ACEType::Allow, rights, subject) {}
};

/// A mandatory-label entry.
class MACE : public ACE {
public:
    MACE(ACERights rights, ACESubject subject) : ACE(ACEType::MandatoryLabel, rights, subject) {}
};
