#include "stand-ins/outlook/Rtf.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <vector>

#include "platform/Windows.h"

namespace stand_ins {
namespace {

constexpr UINT kAnsi = 1252;

bool IsHidden(std::string_view word) {
    static constexpr std::array<std::string_view, 6> hidden = {"fonttbl", "colortbl", "stylesheet",
                                                               "info",    "pict",     "generator"};
    return std::ranges::find(hidden, word) != hidden.end();
}

/// Walks over a rich text and keeps what is shown.
class Reader {
public:
    explicit Reader(std::string_view rtf) : rtf_(rtf) {}

    std::wstring Read() {
        while (at_ < rtf_.size()) {
            const char c = rtf_[at_++];
            if (c == '{') {
                groups_.push_back(groups_.back());
            } else if (c == '}' && groups_.size() > 1) {
                groups_.pop_back();
            } else if (c == '\\') {
                Control_();
            } else if (c != '\r' && c != '\n' && c != '}') {
                Show_(static_cast<unsigned char>(c));
            }
        }
        return text_;
    }

private:
    struct Group_ {
        bool hidden = false;
        long skippedBehindUnicode = 1;
    };

    void Control_() {
        if (at_ == rtf_.size()) {
            return;
        }
        if (std::isalpha(static_cast<unsigned char>(rtf_[at_])) == 0) {
            Symbol_(rtf_[at_++]);
            return;
        }
        const size_t begin = at_;
        while (at_ < rtf_.size() && std::isalpha(static_cast<unsigned char>(rtf_[at_])) != 0) {
            ++at_;
        }
        const std::string word(rtf_.substr(begin, at_ - begin));
        const size_t digits = at_;
        while (at_ < rtf_.size() &&
               (std::isdigit(static_cast<unsigned char>(rtf_[at_])) != 0 || (at_ == digits && rtf_[at_] == '-'))) {
            ++at_;
        }
        const long number = std::strtol(std::string(rtf_.substr(digits, at_ - digits)).c_str(), nullptr, 10);
        at_ += at_ < rtf_.size() && rtf_[at_] == ' ' ? 1 : 0;
        Word_(word, number);
    }

    void Symbol_(char symbol) {
        if (symbol == '\'' && at_ + 2 <= rtf_.size()) {
            Show_(static_cast<unsigned char>(std::strtol(std::string(rtf_.substr(at_, 2)).c_str(), nullptr, 16)));
            at_ += 2;
        } else if (symbol == '*') {
            groups_.back().hidden = true;
        } else if (symbol == '\\' || symbol == '{' || symbol == '}') {
            Show_(static_cast<unsigned char>(symbol));
        }
    }

    void Word_(const std::string& word, long number) {
        if (IsHidden(word)) {
            groups_.back().hidden = true;
        } else if (word == "uc") {
            groups_.back().skippedBehindUnicode = number;
        } else if (groups_.back().hidden) {
            return;
        } else if (word == "par" || word == "line") {
            text_ += L"\r\n";
        } else if (word == "tab") {
            text_ += L'\t';
        } else if (word == "u") {
            text_ += static_cast<wchar_t>(number);
            skip_ = groups_.back().skippedBehindUnicode;
        }
    }

    void Show_(unsigned char byte) {
        if (skip_ > 0) {
            --skip_; // what stands in for a character where Unicode is not known
        } else if (!groups_.back().hidden) {
            const char narrow = static_cast<char>(byte);
            wchar_t wide = L' ';
            MultiByteToWideChar(kAnsi, 0, &narrow, 1, &wide, 1);
            text_ += wide;
        }
    }

    std::string_view rtf_;
    size_t at_ = 0;
    long skip_ = 0;
    std::vector<Group_> groups_ = {{}};
    std::wstring text_;
};

} // namespace

std::wstring PlainTextOfRtf(std::string_view rtf) {
    return Reader(rtf).Read();
}

std::string RtfOf(std::wstring_view text) {
    std::string rtf = "{\\rtf1\\ansi\\ansicpg1252\\uc1 ";
    for (const wchar_t c : text) {
        if (c == L'\\' || c == L'{' || c == L'}') {
            rtf += '\\';
            rtf += static_cast<char>(c);
        } else if (c == L'\n') {
            rtf += "\\par\r\n";
        } else if (c == L'\t') {
            rtf += "\\tab ";
        } else if (c >= 0x80) {
            rtf += "\\u" + std::to_string(static_cast<short>(c)) + "?";
        } else if (c != L'\r') {
            rtf += static_cast<char>(c);
        }
    }
    return rtf + "}";
}

} // namespace stand_ins
