#pragma once
#include "stand-ins/outlook/Object.h"
#include "stand-ins/outlook/Store.h"

namespace stand_ins {

/// A folder of a store; with a path of one part the store's top folder.
class Folder : public Object {
public:
    Folder(std::shared_ptr<Session> session, FolderPath path);

    const FolderPath& Path() const { return path_; }
    /// The folder behind an object, as long as that is held; null for an object that is none.
    static const Folder* Behind(IDispatch* object);

protected:
    void* OwnInterface(REFIID interfaceId) override;

private:
    FolderPath path_;
};

} // namespace stand_ins
