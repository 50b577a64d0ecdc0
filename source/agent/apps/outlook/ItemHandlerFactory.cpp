#include "agent/apps/outlook/ItemHandlerFactory.h"

#include "agent/apps/outlook/MeetingHandler.h"
#include "agent/apps/outlook/MessageHandler.h"
#include "agent/apps/outlook/TaskHandler.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"

namespace vorlek {

LoggerHolder ItemHandlerFactory::logger_;

ItemHandlerFactory::ItemHandlerFactory() {
    InitLogger(logger_, "vorlek::ItemHandlerFactory::ItemHandlerFactory", false);
}

ItemHandler* ItemHandlerFactory::CreateItemHandler(IDispatchPtr item) {
    LOG_DEBUG(logger_, L"Trying to create an item wrapper...");
    if (!item) {
        LOG_WARN(logger_, L"Null was passed to CreateItemHandler");
        return nullptr;
    }
    if (ItemHandler* const meeting = TryToCreateMeetingItem_(item)) {
        LOG_DEBUG(logger_, L"MeetingItem wrapper was created successfully");
        return meeting;
    }
    if (ItemHandler* const mail = TryToCreateMailItem_(item)) {
        LOG_DEBUG(logger_, L"MailItem wrapper was created successfully");
        return mail;
    }
    if (ItemHandler* const task = TryToCreateTaskItem_(item)) {
        LOG_DEBUG(logger_, L"TaskItem wrapper was created successfully");
        return task;
    }
    return nullptr;
}

ItemHandler* ItemHandlerFactory::TryToCreateMeetingItem_(IDispatchPtr item) {
    LOG_INFO(logger_, L"Calling MeetingItem->QueryType");
    return MeetingHandler::QueryType(item) ? new MeetingHandler(item) : nullptr;
}

ItemHandler* ItemHandlerFactory::TryToCreateMailItem_(IDispatchPtr item) {
    LOG_INFO(logger_, L"Calling MailItem->QueryType");
    return MessageHandler::QueryType(item) ? new MessageHandler(item) : nullptr;
}

ItemHandler* ItemHandlerFactory::TryToCreateTaskItem_(IDispatchPtr item) {
    LOG_INFO(logger_, L"Calling TaskItem->QueryType");
    return TaskHandler::QueryType(item) ? new TaskHandler(item) : nullptr;
}

} // namespace vorlek
