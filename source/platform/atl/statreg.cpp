#include "platform/atl/statreg.h"

#include <vector>

#include "platform/atl/RegistryScript.h"
#include "platform/atl/atlbase.h"

namespace ATL {
namespace {

/// Owner of one open key.
class Key_ {
public:
    Key_() = default;
    Key_(const Key_&) = delete;
    Key_& operator=(const Key_&) = delete;
    ~Key_() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }

    HKEY Get() const { return key_; }
    HKEY* Receive() { return &key_; }

private:
    HKEY key_ = nullptr;
};

/// Raises the failure of a registry call; what is absent counts as removed.
void Check_(LSTATUS error) {
    if (error != ERROR_SUCCESS) {
        AtlThrow(AtlHresultFromWin32(error));
    }
}

bool CheckPresent_(LSTATUS error) {
    if (error == ERROR_FILE_NOT_FOUND) {
        return false;
    }
    Check_(error);
    return true;
}

void SetValue_(HKEY key, const RegistryScript::Value& value) {
    Check_(RegSetValueExW(key, value.name.c_str(), 0, value.type, value.data.data(),
                          static_cast<DWORD>(value.data.size())));
}

void DeleteTree_(HKEY parent, const std::wstring& name) {
    CheckPresent_(RegDeleteTreeW(parent, name.c_str()));
}

void Register_(HKEY parent, const RegistryScript::Key& script) {
    using enum RegistryScript::Handling;
    if (script.handling == ForceRemove || script.handling == Delete) {
        DeleteTree_(parent, script.name);
    }
    if (script.handling == Delete) {
        return;
    }
    Key_ key;
    Check_(RegCreateKeyExW(parent, script.name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE,
                           nullptr, key.Receive(), nullptr));
    for (const auto& value : script.values) {
        SetValue_(key.Get(), value);
    }
    for (const auto& child : script.keys) {
        Register_(key.Get(), child);
    }
}

bool HasSubKeys_(HKEY key) {
    DWORD count = 0;
    Check_(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr));
    return count != 0;
}

void Unregister_(HKEY parent, const RegistryScript::Key& script) {
    using enum RegistryScript::Handling;
    if (script.handling == Delete) {
        return;
    }
    if (script.handling == ForceRemove) {
        DeleteTree_(parent, script.name);
        return;
    }
    Key_ key;
    if (!CheckPresent_(RegOpenKeyExW(parent, script.name.c_str(), 0, KEY_READ | KEY_WRITE, key.Receive()))) {
        return;
    }
    for (const auto& child : script.keys) {
        Unregister_(key.Get(), child);
    }
    for (const auto& value : script.values) {
        const bool stays = value.noRemove || (script.handling == NoRemove && value.name.empty());
        if (!stays) {
            CheckPresent_(RegDeleteValueW(key.Get(), value.name.c_str()));
        }
    }
    if (script.handling != NoRemove && !HasSubKeys_(key.Get())) {
        Check_(RegDeleteKeyW(parent, script.name.c_str()));
    }
}

/// The same keys under the current user's classes, where the switch says so.
void MapRoot_(RegistryScript::Root& root) {
    if (root.key != HKEY_CLASSES_ROOT || !AtlGetPerUserRegistration()) {
        return;
    }
    using enum RegistryScript::Handling;
    RegistryScript::Key classes{.name = L"Classes", .handling = NoRemove, .values = {}, .keys = std::move(root.keys)};
    RegistryScript::Key software{.name = L"Software", .handling = NoRemove, .values = {}, .keys = {}};
    software.keys.push_back(std::move(classes));
    root.key = HKEY_CURRENT_USER;
    root.keys.clear();
    root.keys.push_back(std::move(software));
}

template <class Step>
HRESULT Run_(std::wstring_view text, const std::map<std::wstring, std::wstring>& replacements, Step step) noexcept {
    try {
        for (auto& root : RegistryScript::Parse(text, replacements)) {
            MapRoot_(root);
            for (const auto& key : root.keys) {
                step(root.key, key);
            }
        }
        return S_OK;
    } catch (const CAtlException& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

std::wstring LoadScript_(HINSTANCE module, UINT id, const wchar_t* type) {
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), type);
    const HGLOBAL loaded = resource == nullptr ? nullptr : LoadResource(module, resource);
    if (loaded == nullptr) {
        AtlThrow(HRESULT_FROM_WIN32(GetLastError()));
    }
    const auto* bytes = static_cast<const char*>(LockResource(loaded));
    const int size = static_cast<int>(SizeofResource(module, resource));
    std::wstring text(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes, size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes, size, text.data(), static_cast<int>(text.size()));
    return text;
}

template <class Run>
HRESULT RunResource_(HINSTANCE module, UINT id, const wchar_t* type, Run run) noexcept {
    try {
        return run(LoadScript_(module, id, type));
    } catch (const CAtlException& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace

void CRegObject::AddReplacement(const std::wstring& key, const std::wstring& item) {
    replacements_[key] = item;
}

HRESULT CRegObject::StringRegister(std::wstring_view script) const noexcept {
    return Run_(script, replacements_, Register_);
}

HRESULT CRegObject::StringUnregister(std::wstring_view script) const noexcept {
    return Run_(script, replacements_, Unregister_);
}

HRESULT CRegObject::ResourceRegister(HINSTANCE module, UINT id, const wchar_t* type) const noexcept {
    return RunResource_(module, id, type, [&](const std::wstring& script) { return StringRegister(script); });
}

HRESULT CRegObject::ResourceUnregister(HINSTANCE module, UINT id, const wchar_t* type) const noexcept {
    return RunResource_(module, id, type, [&](const std::wstring& script) { return StringUnregister(script); });
}

} // namespace ATL
