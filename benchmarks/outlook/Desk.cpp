#include "benchmarks/outlook/Desk.h"

#include <stdexcept>

namespace outlook_benchmarks {
namespace {

constexpr std::size_t kLongestBody = 10 << 10;
constexpr std::size_t kLongestAttachment = 1 << 20;
constexpr DWORD kLongMs = 600000;

} // namespace

stand_ins::ItemData MailOf(std::size_t bytes) {
    const std::size_t body = std::min(bytes, kLongestBody);
    stand_ins::ItemData mail{.subject = L"Figures",
                             .body = std::wstring(body / sizeof(wchar_t), L'x'),
                             .account = L"me@a.example",
                             .recipients = {{.name = L"You", .address = L"you@b.example"}}};
    for (std::size_t left = bytes - body; left != 0;) {
        const std::size_t size = std::min(left, kLongestAttachment);
        mail.attachments.push_back({.fileName = L"part.bin", .content = std::string(size, 'y')});
        left -= size;
    }
    return mail;
}

void WriteParts(const stand_ins::ItemData& mail, const std::filesystem::path& folder) {
    int files = 0;
    const auto write = [&](const void* bytes, std::size_t size) {
        const vorlek::FileHandle file(CreateFileW((folder / std::to_wstring(++files)).c_str(), GENERIC_WRITE,
                                                  FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                                  nullptr));
        DWORD written = 0;
        WriteFile(file.Get(), bytes, static_cast<DWORD>(size), &written, nullptr);
    };
    const std::wstring& body = mail.htmlBody.empty() ? mail.body : mail.htmlBody;
    write(body.data(), body.size() * sizeof(wchar_t));
    for (const auto& attachment : mail.attachments) {
        write(attachment.content.data(), attachment.content.size());
    }
}

Folder::Folder()
    : path_(std::filesystem::temp_directory_path() / ("outlook-" + std::to_string(GetCurrentProcessId()))) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Desk::Desk(stand_ins::Actions actions, bool holds)
    : released_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      agent_(Options_(std::move(actions), holds)),
      outlook_({.profile = folder_.Path() / L"profile"}),
      addIn_(std::in_place, outlook_.Application()) {
    outlook_.Calls().Enable(false);
    for (const wchar_t* end : {L"Transport.Submit", L"MailItem.Display"}) {
        outlook_.Failures().After(end, [this] { ++done_; });
    }
}

Desk::~Desk() {
    addIn_.reset();
    outlook_.RunUntil([] { return !AddIn::IsLoaded(); }, kLongMs);
}

stand_ins::AgentOptions Desk::Options_(stand_ins::Actions actions, bool holds) const {
    stand_ins::AgentOptions options;
    options.policy = stand_ins::Policy::Always(std::move(actions));
    options.workFolder = folder_.Path() / L"agent";
    options.keepsRequests = false;
    if (holds) {
        options.responder = [this](const stand_ins::Request& request) {
            if (request.method == L"Inspect") {
                WaitForSingleObject(released_.Get(), kLongMs);
            }
            return std::optional<stand_ins::Answer>();
        };
    }
    return options;
}

void Desk::Send(const stand_ins::DispatchPtr& mail) {
    if (!outlook_.RaiseItemSend(mail)) {
        throw std::runtime_error("the mail was not put aside");
    }
}

void Desk::AwaitDone(int mails) {
    if (!outlook_.RunUntil([&] { return done_ >= mails; }, kLongMs)) {
        throw std::runtime_error("mails stay in hand");
    }
}

} // namespace outlook_benchmarks
