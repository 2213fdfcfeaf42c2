#pragma once

#include <QString>
#include <cstdint>

// The live settings. modTLRegistry::LoadSettings fills them from the stored values through the
// settings dialog's controls, and SaveSettings copies the dialog's controls back into them.
class TLSettings {
public:
    bool ConnectedNorvaneServer = false;
    bool AutoLogin = false;
    bool AutoStartApp = false;
    bool AutoStatusIn = false;
    bool AutoDetectActivity = false;
    QString UserName;
    QString Password;            // plain after a load, enciphered after a save
    std::int32_t ViewChoice = 0; // 1 standard view, 2 mini view
    bool ExitShutdown = false;
    std::int32_t RefreshInterval = 0; // seconds
    std::int32_t IdleTime = 0;        // minutes
    bool ChatConnected = false;
    bool EnableChat = false;
    bool ChatConnecting = false;

    // The stored address, or the deployment's default when none is stored.
    QString WebAddress() const;
    void SetWebAddress(const QString& value) { m_webAddress = value; }

    // The stored host, or the deployment's default when none is stored.
    QString ChatServer() const;
    void SetChatServer(const QString& value) { m_chatServer = value; }

    // Columns of the mini view; 5 while none is stored.
    std::int32_t MaxColumns() const { return m_maxColumns == 0 ? 5 : m_maxColumns; }
    void SetMaxColumns(std::int32_t value) { m_maxColumns = value; }

    std::int32_t OrganizationLocationSys() const { return m_organizationLocationSys; }
    void SetOrganizationLocationSys(std::int32_t value) { m_organizationLocationSys = value; }

    // Asked afresh at each reading: the machine has a network connection and the command line
    // doesn't say "/ignorenetwork". The switch thus forces False.
    bool NetworkConnected() const;

private:
    QString m_webAddress;
    QString m_chatServer;
    std::int32_t m_maxColumns = 0;
    std::int32_t m_organizationLocationSys = 0;
};
