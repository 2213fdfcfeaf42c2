#pragma once

#include "base/AutoNew.h"
#include "board/TLSpreadColumns.h"
#include "config/TLSettings.h"
#include "data/TLConstants.h"
#include "data/TLDataAccess.h"
#include "data/TLFunctions.h"
#include "directory/TLContact.h"
#include "directory/TLGroup.h"
#include "directory/TLOrganization.h"
#include "directory/TLStatus.h"
#include "directory/TLStatusRow.h"
#include "identity/TLUser.h"
#include "notes/TLSpreadColumnNotes.h"
#include "update/TLFTP.h"
#include <QString>
#include <cstdint>

// The root object: every shared service of the program hangs off it. Each object member is
// made at its first read and can be replaced (Set...) or released by anyone.
class TLMainObject {
public:
#define TAVLO_MEMBER(Type, Name)                                                                   \
    Type& Name() {                                                                                 \
        return m_##Name.get();                                                                     \
    }                                                                                              \
    void Set##Name(std::unique_ptr<Type> object) {                                                 \
        m_##Name.set(std::move(object));                                                           \
    }                                                                                              \
    bool Name##Made() const {                                                                      \
        return m_##Name.made();                                                                    \
    }

    TAVLO_MEMBER(TLSettings, Settings)
    TAVLO_MEMBER(TLConstants, Constants)
    TAVLO_MEMBER(TLDataAccess, DataAccess)
    TAVLO_MEMBER(TLStatus, ActiveStatus)
    TAVLO_MEMBER(TLUser, ActiveUser)
    TAVLO_MEMBER(TLContact, ActiveContact)
    TAVLO_MEMBER(TLOrganization, ActiveOrganization)
    TAVLO_MEMBER(TLGroup, ActiveGroup)
    TAVLO_MEMBER(TLStatusRow, ActiveStatusRow)
    TAVLO_MEMBER(TLStatus, SelectedStatus)
    TAVLO_MEMBER(TLUser, SelectedUser)
    TAVLO_MEMBER(TLContact, SelectedContact)
    TAVLO_MEMBER(TLOrganization, SelectedOrganization)
    TAVLO_MEMBER(TLFTP, FTP)
    TAVLO_MEMBER(TLGroup, SelectedGroup)
    TAVLO_MEMBER(TLStatusRow, SelectedStatusRow)
    TAVLO_MEMBER(TLFunctions, Functions)
    TAVLO_MEMBER(TLSpreadColumns, SpreadColumns)
    TAVLO_MEMBER(TLSpreadColumnNotes, SpreadColumnNotes)
#undef TAVLO_MEMBER

    QString LatestVersionReleased;
    std::int16_t LatestVersionMajor = 0;
    std::int16_t LatestVersionMinor = 0;
    std::int16_t LatestVersionRevision = 0;

    // The executable's name, " v", then major.minor.revision: the text stored with sessions.
    QString VersionCheck() const;
    QString ComputerName() const;
    QString IPAddress() const;

private:
    AutoNew<TLSettings> m_Settings;
    AutoNew<TLConstants> m_Constants;
    AutoNew<TLDataAccess> m_DataAccess;
    AutoNew<TLStatus> m_ActiveStatus;
    AutoNew<TLUser> m_ActiveUser;
    AutoNew<TLContact> m_ActiveContact;
    AutoNew<TLOrganization> m_ActiveOrganization;
    AutoNew<TLGroup> m_ActiveGroup;
    AutoNew<TLStatusRow> m_ActiveStatusRow;
    AutoNew<TLStatus> m_SelectedStatus;
    AutoNew<TLUser> m_SelectedUser;
    AutoNew<TLContact> m_SelectedContact;
    AutoNew<TLOrganization> m_SelectedOrganization;
    AutoNew<TLFTP> m_FTP;
    AutoNew<TLGroup> m_SelectedGroup;
    AutoNew<TLStatusRow> m_SelectedStatusRow;
    AutoNew<TLFunctions> m_Functions;
    AutoNew<TLSpreadColumns> m_SpreadColumns;
    AutoNew<TLSpreadColumnNotes> m_SpreadColumnNotes;
};
