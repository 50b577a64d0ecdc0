#pragma once
#include <memory>
#include <string>
#include <vector>

#include "stand-ins/outlook/Outlook.h"

namespace stand_ins {

/// What the user does to an item while an add-in has it in hand.
struct Deed {
    enum class Kind { Edit, Move, Delete, CloseExplorer, Die };
    Kind kind = Kind::Edit;
    std::wstring text = {}; ///< done to the items whose subject or body holds this
};

/// The user's deeds in the middle of an inspection: each is due once an add-in has read the item's modification time
/// on a thread of its own.
class Meanwhile {
public:
    Meanwhile(Outlook& outlook, std::vector<Deed> deeds);

    /// Does what is due. On Outlook's thread.
    void DoDue();

private:
    struct Watch_;

    void DoTo_(const std::wstring& entryId);

    Outlook& outlook_;
    std::vector<Deed> deeds_;
    std::shared_ptr<Watch_> watch_; ///< shared with the object model, which may be called to the very end
};

} // namespace stand_ins
