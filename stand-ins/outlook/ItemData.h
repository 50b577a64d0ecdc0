#pragma once
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "platform/Windows.h"

namespace stand_ins {

/// A meeting is what travels between people: a request, a response, a cancellation, a forwarded request, told apart by
/// the message class. An appointment is what stands in a calendar.
enum class ItemKind { Mail, Post, Meeting, Appointment, Task, TaskRequest };

/// Of an appointment: not recurring, the series itself, one of it, one of it that differs from the rest.
enum RecurrenceState : long { NotRecurring = 0, Master = 1, Occurrence = 2, Exception = 3 };

enum BodyFormat : long { Plain = 1, Html = 2, RichText = 3 };

/// MAPI properties by tag, such as 0x39FE001F: what PropertyAccessor answers besides what follows from the fields.
using Properties = std::map<unsigned long, std::wstring>;

struct RecipientData {
    std::wstring name = {};
    std::wstring address = {}; ///< SMTP, or another kind's address when addressType says so
    long type = 1;             ///< 0 originator, 1 To, 2 CC, 3 BCC; anything else is kept as it is
    bool resolved = true;      ///< ResolveAll resolves whoever has an address
    std::wstring addressType = L"SMTP";
    std::wstring group = {};    ///< the named group of a mail's header that he stands in, if any
    Properties properties = {}; ///< an EX recipient's SMTP address: {0x39FE001F, L"..."}
};

struct AttachmentData {
    std::wstring fileName = {};
    std::string content = {};      ///< bytes
    std::wstring displayName = {}; ///< empty: the file name
    long type = 1;                 ///< 1 by value, 5 embedded item
    long position = 0;
    std::wstring mimeType = {};
    std::wstring contentId = {}; ///< of a picture shown inside the HTML body, without angle brackets
    bool saved = false;          ///< Size reads 0 until the first save
};

/// All that an item holds: what a test builds, what the store keeps and what is delivered.
struct ItemData {
    ItemKind kind = ItemKind::Mail;
    std::wstring subject = {};
    std::wstring body = {}; ///< plain text; of an HTML mail derived when it is empty
    std::wstring htmlBody = {};
    std::string rtfBody = {};
    long bodyFormat = 0; ///< 1 plain, 2 HTML, 3 rich text; 0: by the bodies that are there
    std::wstring fromName = {};
    std::wstring account = {}; ///< SMTP address of SendUsingAccount; without hasAccount no account at all
    bool hasAccount = false;   ///< set by itself when account is not empty
    std::vector<RecipientData> recipients = {};
    std::vector<AttachmentData> attachments = {};
    bool autoForwarded = false;
    std::wstring votingResponse = {};
    std::wstring messageClass = {}; ///< empty: that of the kind
    Properties properties = {};
    std::vector<std::pair<std::wstring, std::wstring>> headers = {}; ///< of the mail it came from, kept for delivery

    std::wstring start = {}; ///< of a meeting or appointment, in its own time zone: 2026-11-30T10:00
    std::wstring end = {};
    std::wstring location = {};
    long recurrenceState = NotRecurring; ///< of an appointment
    bool linkBroken = false;             ///< of a meeting: Outlook does not find the appointment by itself

    std::wstring relatedId = {}; ///< EntryID of a task request's task or a meeting's appointment; empty: none
    std::vector<ItemData> related =
        {}; ///< of an item not yet opened: the task or appointment, which becomes an item of its own

    std::wstring entryId = {};       ///< empty until the first save
    double lastModificationTime = 0; ///< OLE date, local; 0 before the first save
    bool sent = false;
};

/// Fills what follows from other fields: body format, plain text of HTML, message class, account.
void Complete(ItemData& item);

/// The form on disk, UTF-8 JSON; the same that mail.py reads and writes.
nlohmann::json ToJson(const ItemData& item);
/// Failure: std::runtime_error that names the field and what is wrong with it.
ItemData FromJson(const nlohmann::json& json);

} // namespace stand_ins
