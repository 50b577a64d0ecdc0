#include "stand-ins/outlook/CommandLine.h"

#include <functional>
#include <map>
#include <stdexcept>

#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

[[noreturn]] void Refuse(const std::wstring& words) {
    throw std::runtime_error(ToUtf8(words));
}

// Outlook's own switch of an automation start, in the spellings that it takes.
bool IsEmbedding(const std::wstring& argument) {
    for (const wchar_t* form : {L"-embedding", L"/embedding", L"embedding"}) {
        if (_wcsicmp(argument.c_str(), form) == 0) {
            return true;
        }
    }
    return false;
}

unsigned long ParseNumber(const std::wstring& text, int base, const std::wstring& whole) {
    wchar_t* end = nullptr;
    const unsigned long number = std::wcstoul(text.c_str(), &end, base);
    if (text.empty() || *end != L'\0' || std::iswdigit(text[0]) == 0) {
        Refuse(L"\"" + whole + L"\" holds no number where one is wanted");
    }
    return number;
}

FaultOption ParseFault(const std::wstring& text) {
    const size_t equals = text.find(L'=');
    const size_t hash = text.find(L'#');
    if (equals == std::wstring::npos || text.find(L'.') > equals) {
        Refuse(L"--fail wants Class.Member=0xHRESULT or Class.Member=0xHRESULT#n, not \"" + text + L"\"");
    }
    FaultOption fault;
    fault.member = text.substr(0, equals);
    const size_t length = hash == std::wstring::npos ? hash : hash - equals - 1;
    fault.result = static_cast<HRESULT>(ParseNumber(text.substr(equals + 1, length), 0, text));
    if (SUCCEEDED(fault.result)) {
        Refuse(L"the HRESULT of \"" + text + L"\" is no failure");
    }
    if (hash != std::wstring::npos) {
        fault.nth = ParseNumber(text.substr(hash + 1), 10, text);
    }
    return fault;
}

DeathOption ParseDeath(const std::wstring& text) {
    const size_t colon = text.find(L':');
    const size_t hash = text.find(L'#');
    const std::wstring when = text.substr(0, colon);
    if (colon == std::wstring::npos || (when != L"before" && when != L"after") || text.find(L'.') >= hash) {
        Refuse(L"--die wants before or after, a colon and Class.Member or Class.Member#n, not \"" + text + L"\"");
    }
    DeathOption death{text.substr(colon + 1, hash == std::wstring::npos ? hash : hash - colon - 1), when == L"after"};
    if (hash != std::wstring::npos) {
        death.nth = ParseNumber(text.substr(hash + 1), 10, text);
    }
    return death;
}

ExplorerState ParseExplorer(const std::wstring& text) {
    static const std::map<std::wstring, ExplorerState> states = {
        {L"shown", ExplorerState::Shown}, {L"disabled", ExplorerState::Disabled}, {L"missing", ExplorerState::Missing}};
    const auto found = states.find(text);
    if (found == states.end()) {
        Refuse(L"--explorer is one of shown, disabled and missing, not \"" + text + L"\"");
    }
    return found->second;
}

Editor ParseEditor(const std::wstring& text) {
    static const std::map<std::wstring, Editor> editors = {
        {L"outlook", Editor::Outlook}, {L"word", Editor::Word}, {L"renamed-word", Editor::WordUnderAnotherTitle}};
    const auto found = editors.find(text);
    if (found == editors.end()) {
        Refuse(L"--editor is one of outlook, word and renamed-word, not \"" + text + L"\"");
    }
    return found->second;
}

Deed ParseDeed(const std::wstring& text) {
    static const std::map<std::wstring, Deed::Kind> kinds = {{L"edit", Deed::Kind::Edit},
                                                             {L"move", Deed::Kind::Move},
                                                             {L"delete", Deed::Kind::Delete},
                                                             {L"close-explorer", Deed::Kind::CloseExplorer},
                                                             {L"die", Deed::Kind::Die}};
    const size_t colon = text.find(L':');
    const auto found = kinds.find(text.substr(0, colon));
    if (colon == std::wstring::npos || found == kinds.end()) {
        Refuse(L"--meanwhile wants edit, move, delete, close-explorer or die, a colon and a text, not \"" + text +
               L"\"");
    }
    return {found->second, text.substr(colon + 1)};
}

using Value = const std::wstring&;

// Options with a value, and those without one.
std::map<std::wstring, std::function<void(Value)>> ValueOptions(CommandLine& line) {
    return {{L"--profile", [&](Value value) { line.outlook.profile = value; }},
            {L"--version", [&](Value value) { line.outlook.version = value; }},
            {L"--explorer", [&](Value value) { line.outlook.explorer = ParseExplorer(value); }},
            {L"--editor", [&](Value value) { line.outlook.editor = ParseEditor(value); }},
            {L"--record", [&](Value value) { line.record = value; }},
            {L"--fail", [&](Value value) { line.faults.push_back(ParseFault(value)); }},
            {L"--die", [&](Value value) { line.deaths.push_back(ParseDeath(value)); }},
            {L"--meanwhile", [&](Value value) { line.deeds.push_back(ParseDeed(value)); }},
            {L"--until", [&](Value value) { line.until = value; }},
            {L"--wait", [&](Value value) { line.waitMs = 1000 * ParseNumber(value, 10, value); }}};
}

std::map<std::wstring, std::function<void()>> Switches(CommandLine& line) {
    return {{L"--strict-threads", [&] { line.outlook.strictThreads = true; }},
            {L"--keep-ids", [&] { line.outlook.keepsEntryIdOnMove = true; }},
            {L"--early-explorer", [&] { line.earlyExplorer = true; }},
            {L"--read-boxes", [&] { line.readBoxes = true; }},
            {L"--figures", [&] { line.figures = true; }},
            {L"--no-addins", [&] { line.addIns = false; }},
            {L"--tell-shutdown", [&] { line.tellShutdown = true; }},
            {L"--help", [&] { line.help = true; }}};
}

} // namespace

CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
    CommandLine line;
    const auto values = ValueOptions(line);
    const auto switches = Switches(line);
    bool sending = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring& argument = arguments[i];
        if (const auto option = values.find(argument); option != values.end()) {
            if (++i == arguments.size()) {
                Refuse(argument + L" wants a value");
            }
            option->second(arguments[i]);
            sending = false;
        } else if (const auto flag = switches.find(argument); flag != switches.end()) {
            flag->second();
            sending = false;
        } else if (argument == L"--send") {
            sending = true;
        } else if (IsEmbedding(argument)) {
            sending = false; // for the add-in to see: it reads the command line itself
        } else if (sending && !argument.starts_with(L'-')) {
            line.items.emplace_back(argument);
        } else {
            Refuse(L"unknown option \"" + argument + L"\"; --help tells the known ones");
        }
    }
    if (line.outlook.profile.empty() && !line.help) {
        Refuse(L"--profile is missing");
    }
    return line;
}

const char* Usage() {
    return "usage: outlook.exe --profile DIR [OPTION ...] [--send ITEM.json ...]\n"
           "\n"
           "  --profile DIR        the folder of the stores and of the delivered items; created when missing\n"
           "  --send ITEM.json ... the user opens these items and sends them, one after the other, without waiting\n"
           "  --wait SECONDS       how long to wait, after the last, for items that an add-in has in hand (60)\n"
           "  --until EVENT        stay until this event is set, whatever becomes of the items\n"
           "  --meanwhile DO:TEXT  while an add-in inspects an item whose subject or body holds TEXT, the user does "
           "one\n"
           "                       of edit, move, delete (to the item) and close-explorer; die: Outlook ends as with "
           "--die\n"
           "  --read-boxes         the user presses OK on every message box; what it says is told\n"
           "  --version N.N.N.N    what Application.Version answers (16.0.5.1)\n"
           "  --editor EDITOR      before Outlook 2007: outlook (as usual), word, or renamed-word, whose window has "
           "another\n"
           "                       title than Outlook says\n"
           "  -Embedding           started for automation; also Embedding and /Embedding, in any case\n"
           "  --explorer STATE     shown (as usual), disabled or missing; it comes once the add-ins are loaded\n"
           "  --early-explorer     it comes before them\n"
           "  --keep-ids           a moved item keeps its EntryID\n"
           "  --strict-threads     refuse direct calls from other threads\n"
           "  --no-addins          load no add-in\n"
           "  --fail M=HRESULT[#n] let a member such as MailItem.Send fail, always or at its n-th call\n"
           "  --die WHEN:M[#n]     end at once, without a look back and with the status 86, before or after the first "
           "(or\n"
           "                       n-th) call of a member such as MailItem.Send; Transport.Submit is the item's "
           "leaving\n"
           "  --record FILE        write every call of the object model there\n"
           "  --figures            tell what the process holds after the first item, and after the last\n"
           "  --tell-shutdown      tell the add-ins of the end, as Outlook did before 2010\n";
}

} // namespace stand_ins
