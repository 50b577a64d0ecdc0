#pragma once
#include "foundation/Exception.h"

namespace vorlek {

/// The inspector document could not be built; the words are those of the XML layer.
class CInspectorMessageXmlException : public NamedException<L"CInspectorMessageXmlException", Exception> {
    using Named::Named;
};
/// A data item could not be turned into the text that the inspector document needs.
class CInspectorMessageException : public NamedException<L"CInspectorMessageException", Exception> {
    using Named::Named;
};
/// The agent's account of the channels in force cannot be read; the words are those of the XML layer.
class DataAccessChannelsMessageFormatException
    : public NamedException<L"DataAccessChannelsMessageFormatException", Exception> {
    using Named::Named;
};
/// The service answered a call with an account of its own failure, which is this failure's message.
class RemoteException : public NamedException<L"RemoteException", Exception> {
    using Named::Named;
};
/// The peer is gone, or the connection broke in the middle of an exchange.
class ConnectionTerminatedException : public NamedException<L"ConnectionTerminatedException", Exception> {
    using Named::Named;
};

namespace PluginUtils {

/// A call to the agent failed on the way there or back.
class PluginManagerConnectionException : public NamedException<L"PluginManagerConnectionException", Exception> {
    using Named::Named;
};
/// An inspector message could not be handed to the agent.
class PluginManagerFormatException : public NamedException<L"PluginManagerFormatException", Exception> {
    using Named::Named;
};

} // namespace PluginUtils
} // namespace vorlek
