#include "agent/apps/outlook/RecipientKey.h"

#include "plugin-link/Vocabulary.h"

namespace vorlek {

const wchar_t* RecipientKey(long type) {
    switch (type) {
    case 1:
        return vocabulary::key::kEmailTo;
    case 2:
        return vocabulary::key::kEmailCc;
    case 3:
        return vocabulary::key::kEmailBcc;
    default:
        return L"";
    }
}

} // namespace vorlek
