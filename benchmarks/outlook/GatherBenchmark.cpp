#include <filesystem>

#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/MessageHandler.h"
#include "benchmarks/outlook/Desk.h"
#include "benchmarks/support/Row.h"

namespace {

using namespace outlook_benchmarks;
using benchmark_support::Row;

constexpr std::size_t kMega = 1 << 20;

/// A body of 10 MB and ten attachments of 1 MB.
stand_ins::ItemData LargeMail_(bool html) {
    stand_ins::ItemData mail = MailOf(0);
    for (int i = 0; i < 10; ++i) {
        mail.attachments.push_back({.fileName = L"part.bin", .content = std::string(kMega, 'y')});
    }
    (html ? mail.htmlBody : mail.body) = std::wstring(10 * kMega / sizeof(wchar_t), L'x');
    return mail;
}

void RemoveFiles_() {
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::temp_directory_path() / "CITemp", ignored);
}

template <bool Html>
void Gather_(benchmark::State& state) {
    const Folder folder;
    stand_ins::Outlook outlook({.profile = folder.Path() / L"profile"});
    outlook.Calls().Enable(false);
    vorlek::GlobalConfig::SetOutlookApplication(Outlook::_ApplicationPtr(outlook.Application().GetInterfacePtr()));
    {
        const auto mail = outlook.NewMail(LargeMail_(Html));
        vorlek::MessageHandler handler(Outlook::_MailItemPtr(mail.GetInterfacePtr()));
        for (auto turn : state) {
            vorlek::CInspectorMessage message(L"Email");
            handler.FillInspectorMessage(message);
            state.PauseTiming();
            RemoveFiles_();
            state.ResumeTiming();
        }
    }
    vorlek::GlobalConfig::SetOutlookApplication({});
}

/// The files that the gathering makes, of the same bytes.
template <bool Html>
void WriteFiles_(benchmark::State& state) {
    const Folder folder;
    const auto mail = LargeMail_(Html);
    for (auto turn : state) {
        WriteParts(mail, folder.Path());
        state.PauseTiming();
        std::filesystem::remove_all(folder.Path());
        std::filesystem::create_directory(folder.Path());
        state.ResumeTiming();
    }
}

const Row plain("gather 10 MB text, 10 attachments / write them", "at most 1.5", Gather_<false>, WriteFiles_<false>);
const Row html("gather 10 MB HTML, 10 attachments / write them", "", Gather_<true>, WriteFiles_<true>);

} // namespace
