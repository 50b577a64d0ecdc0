// Which object an operation of the meeting handler lands on, for every kind of meeting, on both roads. The table is to
// be read beside the handler.
#include <algorithm>
#include <functional>
#include <map>
#include <sstream>

#include "tests/outlook/MeetingTest.h"

namespace vorlek {
namespace {

using outlook_tests::Forward;
using outlook_tests::kCancellation;
using outlook_tests::kResponse;
using outlook_tests::MeetingTest;
using outlook_tests::OfClass;
using outlook_tests::Request;

// found    the meeting item leads to its appointment
// hidden   only Redemption finds the way: the item leads nowhere, and the ledger has no entry
// missing  the appointment was deleted after the handler was made
//
// appt     the appointment, through Outlook
// rdo      the appointment, through Redemption
// item     the meeting item, through Outlook
// none     no object, and nothing is raised
// raises   no object, and E_POINTER is raised
constexpr wchar_t kTable[] = LR"(
               | 16 with Redemption       | 16 without               | 11 with Redemption       | 11 without
               | found   hidden   missing | found   hidden   missing | found   hidden   missing | found   hidden   missing
subject
  request      | appt    rdo      raises  | appt    raises   raises  | rdo     rdo      raises  | raises  raises   raises
  forward      | item    item     item    | item    item     item    | item    item     item    | item    item     item
  response     | item    item     item    | item    item     item    | item    item     item    | item    item     item
  cancellation | item    item     item    | item    item     item    | item    item     item    | item    item     item
body
  request      | appt    raises   raises  | appt    raises   raises  | rdo     rdo      raises  | raises  raises   raises
  forward      | item    item     item    | item    item     item    | item    item     item    | item    item     item
  response     | item    item     item    | item    item     item    | item    item     item    | item    item     item
  cancellation | item    item     item    | item    item     item    | item    item     item    | item    item     item
attachments
  request      | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | none    none     none
  forward      | item    item     item    | item    item     item    | item    item     item    | item    item     item
  response     | item    item     item    | item    item     item    | item    item     item    | item    item     item
  cancellation | item    item     item    | item    item     item    | item    item     item    | item    item     item
send
  request      | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | appt    none     none
  forward      | item    rdo      none    | item    none     none    | rdo     rdo      none    | item    none     none
  response     | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | appt    none     none
  cancellation | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | appt    none     none
display
  request      | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | none    none     none
  forward      | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | none    none     none
  response     | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | none    none     none
  cancellation | appt    rdo      none    | appt    none     none    | rdo     rdo      none    | none    none     none
close
  request      | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  forward      | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  response     | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  cancellation | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
time
  request      | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  forward      | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  response     | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
  cancellation | appt    none     none    | appt    none     none    | appt    none     none    | appt    none     none
)";

// The same for two questions. The ID by which the sent copy is known is the appointment's or the item's; a meeting is
// handled on the spot or not.
constexpr wchar_t kQuestions[] = LR"(
               | 16 with Redemption       | 16 without               | 11 with Redemption       | 11 without
               | found   hidden   missing | found   hidden   missing | found   hidden   missing | found   hidden   missing
sent ID
  request      | appt    item     item    | appt    item     item    | appt    item     item    | appt    item     item
  forward      | appt    item     item    | appt    item     item    | appt    item     item    | appt    item     item
  response     | appt    item     item    | appt    item     item    | appt    item     item    | appt    item     item
  cancellation | appt    item     item    | appt    item     item    | appt    item     item    | appt    item     item
on the spot
  request      | no      yes      yes     | no      yes      yes     | no      no       yes     | yes     yes      yes
  forward      | no      yes      yes     | no      yes      yes     | yes     yes      yes     | yes     yes      yes
  response     | yes     yes      yes     | yes     yes      yes     | yes     yes      yes     | yes     yes      yes
  cancellation | yes     yes      yes     | yes     yes      yes     | yes     yes      yes     | yes     yes      yes
)";

/// One cell with what it stands for.
struct Cell {
    std::wstring type;
    bool isOld = false;
    bool hasRedemption = false;
    std::wstring appointment; ///< found, hidden, missing
    std::wstring outcome;

    std::wstring ToString() const {
        return type + (isOld ? L", 11, " : L", 16, ") + (hasRedemption ? L"Redemption, " : L"no Redemption, ") +
               appointment;
    }
};

/// The cells of one operation.
std::vector<Cell> CellsOf(const std::wstring& table, const std::wstring& operation) {
    std::wistringstream lines(table);
    std::vector<Cell> cells;
    bool isOurs = false;
    for (std::wstring line; std::getline(lines, line);) {
        if (line.find(L'|') == std::wstring::npos) {
            isOurs = line == operation;
        } else if (isOurs) {
            std::ranges::replace(line, L'|', L' ');
            std::wistringstream words(line);
            Cell cell;
            words >> cell.type;
            for (const auto& [isOld, hasRedemption] :
                 {std::pair(false, true), {false, false}, {true, true}, {true, false}}) {
                for (const wchar_t* appointment : {L"found", L"hidden", L"missing"}) {
                    cell.isOld = isOld;
                    cell.hasRedemption = hasRedemption;
                    cell.appointment = appointment;
                    words >> cell.outcome;
                    cells.push_back(cell);
                }
            }
        }
    }
    return cells;
}

class MeetingTableTest : public MeetingTest {
protected:
    void StartCell(const Cell& cell) {
        outlook->Failures().Clear();
        SetVersion(L"16.0.5.1");
        RemoveRedemption();
        Start(cell.type == L"forward"        ? Forward()
              : cell.type == L"response"     ? OfClass(kResponse)
              : cell.type == L"cancellation" ? OfClass(kCancellation)
                                             : Request());
        if (cell.hasRedemption) {
            InstallRedemption();
        }
        if (cell.isOld) {
            BecomeOld();
        }
        if (cell.appointment == L"hidden") {
            outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
        } else if (cell.appointment == L"missing") {
            stand_ins::Invoke(appointment, L"Delete");
        }
        ClearTraces();
    }

    /// The objects that a member was called on.
    std::wstring Landed(const wchar_t* member) const {
        const std::pair<const wchar_t*, const wchar_t*> classes[] = {{L"AppointmentItem.", L"appt"},
                                                                     {L"RDOAppointmentItem.", L"rdo"},
                                                                     {L"MeetingItem.", L"item"},
                                                                     {L"RDOMeetingItem.", L"rdo item"}};
        std::wstring landed;
        for (const auto& [className, word] : classes) {
            if (outlook->Calls().Count(std::wstring(className) + member) != 0) {
                landed += (landed.empty() ? L"" : L"+") + std::wstring(word);
            }
        }
        return landed.empty() ? L"none" : landed;
    }

    /// Runs an operation in every cell of the table and looks at where its member was called.
    void ExpectCells(const std::wstring& operation, const wchar_t* member, const std::function<void()>& run) {
        const auto cells = CellsOf(kTable, operation);
        ASSERT_EQ(cells.size(), 4u * 12u);
        for (const Cell& cell : cells) {
            StartCell(cell);
            std::wstring outcome;
            try {
                run();
                outcome = Landed(member);
            } catch (const _com_error& failure) {
                outcome = failure.Error() == E_POINTER && Landed(member) == L"none" ? L"raises" : L"another failure";
            }
            EXPECT_EQ(outcome, cell.outcome) << testing::PrintToString(operation + L": " + cell.ToString());
        }
    }

    /// The same for an operation that changes a text, which must be the one of that object and no other.
    void ExpectTextCells(const std::wstring& operation, const wchar_t* property, const std::function<void()>& run) {
        const auto putMember = std::wstring(property) + L" put";
        ExpectCells(operation, putMember.c_str(), [&] {
            const auto textOf = [&](const stand_ins::DispatchPtr& object) {
                try {
                    return stand_ins::GetText(object, property);
                } catch (const _com_error&) {
                    return std::wstring(L"deleted");
                }
            };
            const std::pair before(textOf(appointment), textOf(item));
            run();
            const std::wstring landed = Landed(putMember.c_str());
            EXPECT_EQ(textOf(appointment) != before.first, landed == L"appt" || landed == L"rdo");
            EXPECT_EQ(textOf(item) != before.second, landed == L"item");
        });
    }
};

TEST_F(MeetingTableTest, ASubjectLandsOnItsObjectAlone) {
    ExpectTextCells(L"subject", L"Subject", [&] { handler->LabelSubject(L"[Secret]"); });
}

TEST_F(MeetingTableTest, ABodyLandsOnItsObjectAlone) {
    const std::wstring path = File(L"body.txt", std::string("\xFF\xFEN\0e\0w\0", 8));
    ExpectTextCells(L"body", L"Body", [&] { handler->LabelBody(path); });
}

TEST_F(MeetingTableTest, AttachmentsLandOnTheirObjectAlone) {
    const InspectionDecision::Attachments files{{File(L"a.bin", "A"), L"a.txt"}};
    ExpectCells(L"attachments", L"Attachments", [&] {
        const bool replaced = handler->OverrideItemAttachments(files);
        EXPECT_EQ(replaced, Landed(L"Attachments") != L"none");
        const auto countOf = [](const std::vector<stand_ins::ItemData>& items) {
            return items.empty() ? std::wstring() : items[0].attachments.at(0).displayName;
        };
        stand_ins::Invoke(item, L"Save");
        EXPECT_EQ(countOf(outlook->ItemsIn(L"Drafts")) == L"a.txt", Landed(L"Attachments") == L"item");
        for (const auto& each : outlook->ItemsIn(L"Drafts")) {
            stand_ins::Invoke(
                stand_ins::DispatchPtr(stand_ins::Invoke(stand_ins::GetObject(outlook->Application(), L"Session"),
                                                         L"GetItemFromID", {each.entryId.c_str()})),
                L"Delete");
        }
    });
}

TEST_F(MeetingTableTest, ASendIsThatOfItsObjectAlone) {
    ExpectCells(L"send", L"Send", [&] {
        const size_t before = outlook->Delivered().size();
        handler->Send();
        EXPECT_EQ(outlook->Delivered().size() - before, Landed(L"Send") == L"none" ? 0u : 1u);
    });
}

TEST_F(MeetingTableTest, ADisplayIsThatOfTheAppointmentAndTheItemGoesInEveryCase) {
    ExpectCells(L"display", L"Display", [&] {
        handler->Display();
        EXPECT_THAT(outlook->ItemsIn(L"Drafts"), testing::IsEmpty());
    });
}

TEST_F(MeetingTableTest, ACloseIsThatOfTheAppointmentAlone) {
    ExpectCells(L"close", L"Close", [&] { handler->Close(); });
}

TEST_F(MeetingTableTest, TheModificationTimeIsThatOfTheAppointmentAlone) {
    ExpectCells(L"time", L"LastModificationTime", [&] {
        const DATE time = handler->GetLastModificationTime();
        EXPECT_EQ(time == 0, Landed(L"LastModificationTime") == L"none");
    });
}

TEST_F(MeetingTableTest, TheSentCopyIsKnownByOneOfTheTwoIds) {
    const auto cells = CellsOf(kQuestions, L"sent ID");
    ASSERT_EQ(cells.size(), 4u * 12u);
    for (const Cell& cell : cells) {
        StartCell(cell);
        const std::wstring id = handler->GetSentItemUniqueID();
        const std::wstring answer = id == ItemId() ? L"item" : id == AppointmentId() ? L"appt" : L"another";
        EXPECT_EQ(answer, cell.outcome) << testing::PrintToString(cell.ToString());
    }
}

TEST_F(MeetingTableTest, AMeetingIsOnTheSpotOrNot) {
    const auto cells = CellsOf(kQuestions, L"on the spot");
    ASSERT_EQ(cells.size(), 4u * 12u);
    for (const Cell& cell : cells) {
        StartCell(cell);
        EXPECT_EQ(std::wstring(handler->HandleOnSpot() ? L"yes" : L"no"), cell.outcome)
            << testing::PrintToString(cell.ToString());
    }
}

} // namespace
} // namespace vorlek
