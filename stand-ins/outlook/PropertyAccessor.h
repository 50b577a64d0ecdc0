#pragma once
#include <functional>
#include <optional>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// Reads the property of a tag such as 0x39FE001F, if it is there. The 8-bit form of a text (001E) is asked for as
/// the 16-bit one.
using PropertyReader = std::function<std::optional<std::wstring>(unsigned long)>;

/// Answers MAPI properties by their names in the proptag schema.
class PropertyAccessor : public Object {
public:
    PropertyAccessor(std::shared_ptr<Session> session, PropertyReader reader);

    /// Failure: MAPI_E_NOT_FOUND for a missing property, E_INVALIDARG for a name of another form.
    std::wstring Read(const std::wstring& name) const;

private:
    PropertyReader reader_;
};

PropertyReader PropertiesOfItem(std::shared_ptr<ItemRecord> record);
PropertyReader PropertiesOfRecipient(std::shared_ptr<ItemRecord> record, std::shared_ptr<RecipientData> recipient);
PropertyReader PropertiesOfAttachment(std::shared_ptr<ItemRecord> record, std::shared_ptr<AttachmentData> attachment);

} // namespace stand_ins
