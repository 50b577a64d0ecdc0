#pragma once
#include <string>

#include "agent/apps/outlook/ItemWrapper.h"

namespace vorlek {

/// A mail.
class MessageHandler : public ItemWrapper<Outlook::_MailItemPtr> {
public:
    /// item: any object that answers the interface of a mail; another makes a handler without an item.
    explicit MessageHandler(Outlook::_MailItemPtr item);

    /// Whether an object is a mail. Raises _com_error if it cannot say.
    static bool QueryType(IDispatchPtr item);

    std::wstring GetSentItemUniqueID() override;
    void Send() override;
    bool HandleOnSpot() override;
    bool OverrideItemAttachments(const InspectionDecision::Attachments& attachments) override;
    DATE GetLastModificationTime() override;
    Redemption::ISafeItemPtr GetSafeItem() override;
    void ExportBody(std::wstring& path, _bstr_t& plainText) override;

protected:
    ItemHandler* CreateSameKind(Outlook::_MailItemPtr item) override;
    void LabelSubject(const std::wstring& label) override;
    void LabelBody(const std::wstring& path) override;

private:
    bool SendWithRDO_();
    bool LeaveLedger_(bool& sent);
    void SendThroughOutlook_();
    void GiveBackToUser_();
    std::wstring ExportHtml_();
    std::wstring ExportRichText_();
    Redemption::IRDOMailPtr GetLabelledMail_();

    static LoggerHolder logger_;
};

} // namespace vorlek
