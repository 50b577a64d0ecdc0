#pragma once
#include "agent/apps/outlook/ItemHandler.h"
#include "foundation/LoggerHolder.h"
#include "platform/com/LateBound.h"

namespace vorlek {

/// Makes the handler that fits an object of Outlook's. The interface that an object answers decides, not
/// its message class.
class ItemHandlerFactory {
public:
    ItemHandlerFactory();

    /// A new handler, the caller's; null for a null item or one of another kind. Raises _com_error if an
    /// item cannot say what it is.
    ItemHandler* CreateItemHandler(IDispatchPtr item);

private:
    ItemHandler* TryToCreateMeetingItem_(IDispatchPtr item);
    ItemHandler* TryToCreateMailItem_(IDispatchPtr item);
    ItemHandler* TryToCreateTaskItem_(IDispatchPtr item);

    static LoggerHolder logger_;
};

} // namespace vorlek
