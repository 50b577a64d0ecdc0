#pragma once
#include <string>

/// Where things live on this machine. Failures raise vorlek::Exception.
class EnvUtils {
public:
    /// An environment variable.
    static std::wstring GetVariable(const std::wstring& name);
    /// With a backslash at the end.
    static std::wstring GetTempDirectory();
    static std::wstring GetLocalLowTempDirectory();
    /// The path of a new empty file in the temporary directory, which the caller removes.
    static std::wstring GetTempFile(const std::wstring& prefix = L"tmp");
    static std::wstring GetMachineName();
    /// The application data that all users share. Raises as RegistryKey does.
    static std::wstring GetCommonAppDataDirectory();
};
