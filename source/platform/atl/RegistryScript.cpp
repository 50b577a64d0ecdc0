#include "platform/atl/RegistryScript.h"

#include <cwctype>
#include <optional>

#include "platform/atl/atlbase.h"

namespace ATL {
namespace {

[[noreturn]] void Refuse_() {
    AtlThrow(DISP_E_EXCEPTION);
}

struct Token_ {
    std::wstring text;
    bool quoted = false;

    /// Whether it is this word of the language; words in quotes are names.
    bool Is(const wchar_t* word) const { return !quoted && _wcsicmp(text.c_str(), word) == 0; }
};

struct RootName_ {
    const wchar_t* name;
    HKEY key;
};

const RootName_ kRootNames[] = {
    {L"HKCR", HKEY_CLASSES_ROOT},  {L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {L"HKCU", HKEY_CURRENT_USER},  {L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {L"HKLM", HKEY_LOCAL_MACHINE}, {L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
};

class Parser_ {
public:
    Parser_(std::wstring_view text, const std::map<std::wstring, std::wstring>& replacements)
        : rest_(text), replacements_(replacements) {
        Advance_();
    }

    std::vector<RegistryScript::Root> Roots() {
        std::vector<RegistryScript::Root> roots;
        while (token_) {
            RegistryScript::Root root{.key = RootKey_(), .keys = {}};
            RegistryScript::Key body{};
            Advance_();
            Body_(body);
            if (!body.values.empty()) {
                Refuse_();
            }
            root.keys = std::move(body.keys);
            roots.push_back(std::move(root));
        }
        return roots;
    }

private:
    HKEY RootKey_() const {
        for (const auto& root : kRootNames) {
            if (token_->Is(root.name)) {
                return root.key;
            }
        }
        Refuse_();
    }

    /// '{' entries '}'
    void Body_(RegistryScript::Key& key) {
        if (!At_(L"{")) {
            Refuse_();
        }
        for (Advance_(); !At_(L"}");) {
            Entry_(key);
        }
        Advance_();
    }

    void Entry_(RegistryScript::Key& parent) {
        using enum RegistryScript::Handling;
        auto handling = Plain;
        if (Accept_(L"NoRemove")) {
            handling = NoRemove;
        } else if (Accept_(L"ForceRemove")) {
            handling = ForceRemove;
        } else if (Accept_(L"Delete")) {
            handling = Delete;
        }
        if (Accept_(L"val")) {
            if (handling != Plain && handling != NoRemove) {
                Refuse_();
            }
            auto name = Name_();
            if (!Accept_(L"=")) {
                Refuse_();
            }
            parent.values.push_back(Value_(std::move(name), handling == NoRemove));
            return;
        }
        RegistryScript::Key key{.name = Name_(), .handling = handling, .values = {}, .keys = {}};
        if (Accept_(L"=")) {
            key.values.push_back(Value_({}, false));
        }
        if (At_(L"{")) {
            Body_(key);
        }
        parent.keys.push_back(std::move(key));
    }

    std::wstring Name_() {
        if (At_(L"{") || At_(L"}") || At_(L"=")) {
            Refuse_();
        }
        auto name = Text_();
        if (name.empty()) {
            Refuse_();
        }
        return name;
    }

    RegistryScript::Value Value_(std::wstring name, bool noRemove) {
        RegistryScript::Value value{.name = std::move(name), .type = REG_SZ, .data = {}, .noRemove = noRemove};
        if (Accept_(L"s")) {
            const auto text = Text_();
            const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
            value.data.assign(bytes, bytes + (text.size() + 1) * sizeof(wchar_t));
        } else if (Accept_(L"d")) {
            value.type = REG_DWORD;
            const DWORD number = Number_(Text_());
            const auto* bytes = reinterpret_cast<const BYTE*>(&number);
            value.data.assign(bytes, bytes + sizeof(number));
        } else if (Accept_(L"b")) {
            value.type = REG_BINARY;
            value.data = Binary_(Text_());
        } else {
            Refuse_();
        }
        return value;
    }

    /// Decimal, or hexadecimal behind 0x or &H.
    static DWORD Number_(const std::wstring& text) {
        const bool hexadecimal = text.starts_with(L"0x") || text.starts_with(L"&H");
        const wchar_t* digits = text.c_str() + (hexadecimal ? 2 : 0);
        wchar_t* end = nullptr;
        errno = 0;
        const unsigned long number = std::wcstoul(digits, &end, hexadecimal ? 16 : 10);
        if (!std::iswxdigit(*digits) || *end != L'\0' || errno == ERANGE) {
            Refuse_();
        }
        return number;
    }

    static std::vector<BYTE> Binary_(const std::wstring& text) {
        if (text.size() % 2 != 0) {
            Refuse_();
        }
        std::vector<BYTE> bytes;
        for (std::size_t at = 0; at < text.size(); at += 2) {
            const std::wstring pair = text.substr(at, 2);
            if (!std::iswxdigit(pair[0]) || !std::iswxdigit(pair[1])) {
                Refuse_();
            }
            bytes.push_back(static_cast<BYTE>(std::wcstoul(pair.c_str(), nullptr, 16)));
        }
        return bytes;
    }

    bool At_(const wchar_t* word) const {
        if (!token_) {
            Refuse_();
        }
        return token_->Is(word);
    }

    bool Accept_(const wchar_t* word) {
        const bool there = At_OrEnd_(word);
        if (there) {
            Advance_();
        }
        return there;
    }

    bool At_OrEnd_(const wchar_t* word) const { return token_ && token_->Is(word); }

    /// The token as a text, its replacements made.
    std::wstring Text_() {
        if (!token_) {
            Refuse_();
        }
        auto text = Replace_(token_->text);
        Advance_();
        return text;
    }

    std::wstring Replace_(const std::wstring& text) const {
        std::wstring result;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t open = text.find(L'%', at);
            result.append(text, at, open - at);
            if (open == std::wstring::npos) {
                break;
            }
            const std::size_t close = text.find(L'%', open + 1);
            if (close == std::wstring::npos) {
                Refuse_();
            }
            const auto replacement = replacements_.find(text.substr(open + 1, close - open - 1));
            if (close == open + 1) {
                result += L'%';
            } else if (replacement != replacements_.end()) {
                result += replacement->second;
            } else {
                Refuse_();
            }
            at = close + 1;
        }
        return result;
    }

    void Advance_() {
        while (!rest_.empty() && std::iswspace(rest_.front())) {
            rest_.remove_prefix(1);
        }
        token_.reset();
        if (rest_.empty()) {
            return;
        }
        token_ = rest_.front() == L'\'' ? Quoted_() : Plain_();
    }

    Token_ Plain_() {
        std::size_t length = 0;
        while (length < rest_.size() && !std::iswspace(rest_[length])) {
            ++length;
        }
        Token_ token{.text = std::wstring(rest_.substr(0, length)), .quoted = false};
        rest_.remove_prefix(length);
        return token;
    }

    Token_ Quoted_() {
        Token_ token{.text = {}, .quoted = true};
        for (std::size_t at = 1; at < rest_.size(); ++at) {
            if (rest_[at] != L'\'') {
                token.text += rest_[at];
            } else if (at + 1 < rest_.size() && rest_[at + 1] == L'\'') {
                token.text += rest_[at++];
            } else {
                rest_.remove_prefix(at + 1);
                return token;
            }
        }
        Refuse_();
    }

    std::wstring_view rest_;
    const std::map<std::wstring, std::wstring>& replacements_;
    std::optional<Token_> token_;
};

} // namespace

std::vector<RegistryScript::Root> RegistryScript::Parse(std::wstring_view text,
                                                        const std::map<std::wstring, std::wstring>& replacements) {
    return Parser_(text, replacements).Roots();
}

} // namespace ATL
