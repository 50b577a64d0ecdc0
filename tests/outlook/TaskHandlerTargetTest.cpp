// On which object each operation acts: for every kind of task request, with its task and without, before Outlook 2007
// and since, without Redemption and with it.
#include "agent/apps/outlook/TaskHandler.h"

#include <array>

#include "tests/outlook/RedemptionClass.h"
#include "tests/outlook/TaskTest.h"

namespace vorlek {
namespace {

using outlook_tests::kAcceptClass;
using outlook_tests::kRequestClass;
using outlook_tests::OpenTaskHandler;
using outlook_tests::RedemptionClass;
using outlook_tests::RequestOf;
using stand_ins::DispatchPtr;
using stand_ins::GetText;
using test_support::ScriptedCall;
using test_support::ScriptedObject;

constexpr wchar_t kSubject[] = L"Paint the fence";

/// The columns of the table: what the user sends.
const std::array<stand_ins::ItemData, 5> kRequests = {
    RequestOf(kAcceptClass, L"Accepted: Paint the fence"), // a response,
    RequestOf(kRequestClass, L"FW: Paint the fence"),      // a forward and
    RequestOf(kRequestClass, kSubject),                    // a request with their task;
    RequestOf(kAcceptClass, kSubject, false),              // a response and
    RequestOf(kRequestClass, kSubject, false),             // a request whose task is missing
};

/// A request and its task, both with changes that nobody has saved.
struct Scene {
    OpenTaskHandler& handler;
    stand_ins::Outlook& outlook;
    DispatchPtr item;
    DispatchPtr task;
    std::wstring& attached; ///< the ID of what Redemption's view was attached to
    std::wstring file;      ///< holds the text "New"

    std::wstring Of(const DispatchPtr& object, const wchar_t* member) const {
        return object ? GetText(object, member) : L"nothing";
    }
    /// Whose value of a member this is.
    char Whose(const std::wstring& value, const wchar_t* member) const {
        return value == Of(item, member) ? 'I' : value == Of(task, member) ? 'T' : '?';
    }
};

/// Everything of an object that an operation may change.
std::wstring StateOf(const DispatchPtr& object) {
    if (!object) {
        return {};
    }
    try {
        return GetText(object, L"Subject") + L"|" + GetText(object, L"Body") + L"|" +
               std::to_wstring(stand_ins::GetNumber(stand_ins::GetObject(object, L"Attachments"), L"Count")) + L"|" +
               std::to_wstring(stand_ins::GetBool(object, L"Saved")) + L"|" +
               GetText(stand_ins::GetObject(object, L"Parent"), L"Name") + L"|" +
               std::to_wstring(static_cast<double>(stand_ins::Get(object, L"LastModificationTime")));
    } catch (const _com_error&) {
        return L"gone";
    }
}

/// Runs an operation that changes something and finds out what it was: B for both objects, x for an operation that
/// raised and changed nothing.
template <class Body>
char Changed(Scene& scene, Body body) {
    const std::wstring item = StateOf(scene.item);
    const std::wstring task = StateOf(scene.task);
    bool raised = false;
    try {
        body();
    } catch (const _com_error& failure) {
        raised = failure.Error() == E_POINTER;
    }
    const bool itemChanged = StateOf(scene.item) != item;
    const bool taskChanged = StateOf(scene.task) != task;
    if (raised) {
        return itemChanged || taskChanged ? '?' : 'x';
    }
    return itemChanged && taskChanged ? 'B' : itemChanged ? 'I' : taskChanged ? 'T' : '-';
}

char SentItemId(Scene& scene) {
    return scene.Whose(scene.handler.GetSentItemUniqueID(), L"EntryID");
}

char ItemId(Scene& scene) {
    return scene.Whose(scene.handler.GetItemUniqueID(), L"EntryID");
}

char Subject(Scene& scene) {
    stand_ins::Put(scene.item, L"Subject", L"The item's own");
    return scene.Whose(scene.handler.GetSubject(), L"Subject");
}

char ModificationTime(Scene& scene) {
    scene.outlook.Failures().Answer(L"TaskRequestItem.LastModificationTime", _variant_t(1.0, VT_DATE));
    scene.outlook.Failures().Answer(L"TaskItem.LastModificationTime", _variant_t(2.0, VT_DATE));
    const DATE time = scene.handler.GetLastModificationTime();
    return time == 1.0 ? 'I' : time == 2.0 ? 'T' : '?';
}

char SafeItem(Scene& scene) {
    const bool given = scene.handler.GetSafeItem() != nullptr;
    return given ? scene.Whose(scene.attached, L"EntryID") : '-';
}

char Export(Scene& scene) {
    std::wstring path;
    _bstr_t text;
    scene.handler.ExportBody(path, text);
    const std::wstring body = platform::ToWide(text);
    return body.empty() ? '-' : body == L"the view's" ? 'V' : scene.Whose(body, L"Body");
}

char Send(Scene& scene) {
    const std::size_t delivered = scene.outlook.Delivered().size();
    const char changed = Changed(scene, [&] { scene.handler.Send(); });
    EXPECT_EQ(scene.outlook.Delivered().size() - delivered, changed == 'B' ? 1u : 0u);
    return changed;
}

char Save(Scene& scene) {
    return Changed(scene, [&] { scene.handler.Save(); });
}

char Close(Scene& scene) {
    return Changed(scene, [&] { scene.handler.Close(); });
}

char Delete(Scene& scene) {
    return Changed(scene, [&] { scene.handler.Delete(); });
}

char Attachments(Scene& scene) {
    bool replaced = false;
    const char changed = Changed(scene, [&] { replaced = scene.handler.OverrideItemAttachments({}); });
    EXPECT_EQ(replaced, changed != '-');
    return changed;
}

char LabelSubject(Scene& scene) {
    return Changed(scene, [&] { scene.handler.LabelSubject(L"Label"); });
}

char LabelBody(Scene& scene) {
    return Changed(scene, [&] { scene.handler.LabelBody(scene.file); });
}

/// For each column of `kRequests` a letter. I: on the item, or the item's value; T: the task; B: both; V: Redemption's
/// view of the task; -: nothing; x: nothing, and E_POINTER is raised.
struct Row {
    const char* operation;
    char (*run)(Scene&);
    const char* since2007;
    const char* since2007WithRedemption;
    const char* before2007;
    const char* before2007WithRedemption;
};

// clang-format off
constexpr Row kTable[] = {
    {"GetSentItemUniqueID",     SentItemId,       "TTTII", "TTTII", "TTTII", "TTTII"},
    {"Send",                    Send,             "BBB--", "BBB--", "BBB--", "BBB--"}, // the task sent, the item deleted
    {"Save",                    Save,             "IIIII", "IIIII", "-----", "-----"}, // the task has its ID
    {"Close",                   Close,            "TTT--", "TTT--", "TTT--", "TTT--"}, // discards the task's changes
    {"OverrideItemAttachments", Attachments,      "ITTI-", "ITTI-", "ITTI-", "ITTI-"},
    {"GetLastModificationTime", ModificationTime, "TTTII", "TTTII", "TTTII", "TTTII"},
    {"GetSafeItem",             SafeItem,         "-----", "TTT--", "-----", "TTT--"},
    {"ExportBody",              Export,           "IIIII", "IIIII", "-----", "VVV--"},
    {"LabelSubject",            LabelSubject,     "ITTIx", "ITTIx", "ITTIx", "ITTIx"},
    {"LabelBody",               LabelBody,        "ITTIx", "ITTIx", "ITTIx", "ITTIx"},
    {"GetItemUniqueID",         ItemId,           "IIIII", "IIIII", "IIIII", "IIIII"},
    {"GetSubject",              Subject,          "IIIII", "IIIII", "IIIII", "IIIII"},
    {"Delete",                  Delete,           "IIIII", "IIIII", "IIIII", "IIIII"},
};
// clang-format on

class TaskHandlerTargetTest : public outlook_tests::TaskTest, public testing::WithParamInterface<Row> {
protected:
    char Run(const stand_ins::ItemData& request, const wchar_t* version, bool withRedemption) {
        const auto redemption = withRedemption ? Redemption() : nullptr;
        const auto handler = HandlerOf(request);
        for (const DispatchPtr& object : {item, task}) {
            if (object) {
                stand_ins::Put(object, L"Body", (GetText(object, L"Body") + L" (edited)").c_str());
            }
        }
        SetVersion(version);
        std::wstring attached = L"nothing";
        attached_ = &attached;
        Scene scene{*handler, *outlook, item, task, attached, File(L"body.txt", std::string("N\0e\0w\0", 6))};
        const char letter = GetParam().run(scene);
        outlook->Failures().Clear();
        return letter;
    }
    std::string RunAll(const wchar_t* version, bool withRedemption = false) {
        std::string letters;
        for (const auto& request : kRequests) {
            letters += Run(request, version, withRedemption);
        }
        return letters;
    }
    std::unique_ptr<RedemptionClass> Redemption() {
        return std::make_unique<RedemptionClass>(L"Redemption.SafeTaskItem", [this] {
            const auto view = ScriptedObject::Create();
            view->Answers(__uuidof(Redemption::ISafeItem))
                .Value(L"Body", L"the view's")
                .Member(L"Item", [this](const ScriptedCall& call, VARIANT*, EXCEPINFO*) {
                    *attached_ = GetText(DispatchPtr(call.arguments.at(0)), L"EntryID");
                    return S_OK;
                });
            return view;
        });
    }

    std::wstring* attached_ = nullptr;
};

TEST_P(TaskHandlerTargetTest, ActsOnTheObjectThatTheTableTells) {
    const Row& row = GetParam();
    EXPECT_EQ(RunAll(L"16.0"), row.since2007);
    EXPECT_EQ(RunAll(L"11.0"), row.before2007);
    EXPECT_EQ(RunAll(L"16.0", true), row.since2007WithRedemption);
    EXPECT_EQ(RunAll(L"11.0", true), row.before2007WithRedemption);
}

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.operation;
}

INSTANTIATE_TEST_SUITE_P(Operations, TaskHandlerTargetTest, testing::ValuesIn(kTable),
                         [](const auto& row) { return std::string(row.param.operation); });

} // namespace
} // namespace vorlek
