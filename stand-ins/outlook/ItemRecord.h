#pragma once
#include <memory>
#include <vector>

#include "stand-ins/outlook/ItemData.h"
#include "stand-ins/outlook/Store.h"

namespace stand_ins {

/// One item in memory, behind every object that shows it. Recipients and attachments are shared with the objects that
/// show them, so that a removal of another one does not move them.
class ItemRecord {
public:
    ItemRecord(ItemData data, FolderPath folder);

    /// The item whole, as it would be saved.
    ItemData Snapshot() const;
    /// Back to what was saved last.
    void Reset(ItemData data);
    /// Failure: the error of an item that was sent, moved away or deleted.
    void CheckAlive() const;

    void SetBody(const std::wstring& text);
    void SetHtmlBody(const std::wstring& html);
    void SetRtfBody(std::string rtf);
    void SetBodyFormat(long format);
    std::wstring HtmlBody() const;
    /// Of a rich-text item only.
    std::string RtfBody() const;

    ItemData data; ///< without recipients and attachments
    std::vector<std::shared_ptr<RecipientData>> recipients;
    std::vector<std::shared_ptr<AttachmentData>> attachments;
    std::shared_ptr<ItemRecord> related; ///< the open item that this one is about, which may not be saved yet
    FolderPath folder;
    std::wstring futureId = {}; ///< the EntryID that the first save gives, where somebody refers to it before
    bool dirty = true;
    bool dead = false;
};

} // namespace stand_ins
