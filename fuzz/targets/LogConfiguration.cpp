#include <log4cxx/helpers/bytearrayinputstream.h>
#include <log4cxx/helpers/loglog.h>
#include <log4cxx/helpers/properties.h>
#include <log4cxx/helpers/threadutility.h>
#include <log4cxx/hierarchy.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <log4cxx/propertyconfigurator.h>

#include "foundation/Log.h"
#include "fuzz/driver/Outcome.h"
#include "fuzz/driver/Random.h"
#include "fuzz/targets/Confinement.h"
#include "fuzz/targets/Targets.h"

namespace fuzz {
namespace {

void Prepare_() {
    Confine();
    // To say what is wrong with a configuration takes most of the time, and nobody reads it here.
    log4cxx::helpers::LogLog::setQuietMode(true);
    // What the last configuration left behind outside its hierarchy.
    log4cxx::helpers::ThreadUtility::configure(log4cxx::helpers::ThreadConfigurationType::NoConfiguration);
}

/// As PropertyConfigurator does with the file of that content. Returns what is wrong with it, or empty.
std::string Configure_(const log4cxx::HierarchyPtr& hierarchy, const std::string& content) {
    try {
        log4cxx::helpers::Properties properties;
        properties.load(std::make_shared<log4cxx::helpers::ByteArrayInputStream>(
            log4cxx::helpers::ByteList(content.begin(), content.end())));
        log4cxx::PropertyConfigurator().doConfigure(properties, hierarchy);
        return {};
    } catch (const std::exception& failure) {
        return NameOfType(failure);
    }
}

/// Whatever the configuration: a program that logs is not to be bothered with its log.
void Log_(const log4cxx::LoggerPtr& logger, UnitsView words) {
    try {
        LOG_ERROR(logger, L"Failed to inspect <" << std::wstring(words) << L">.");
    } catch (const std::exception& failure) {
        throw Violation("a log statement raised " + NameOfType(failure));
    }
}

std::string Run_(UnitsView input) {
    Prepare_();
    const auto hierarchy = log4cxx::Hierarchy::create();
    const std::string failure = Configure_(hierarchy, ToBytes(input));
    const log4cxx::LoggerPtr logger = hierarchy->getLogger(L"outlookqltplugin.vorlek.OutlookController");
    LetWritesFail(Hash(input) % 16 == 0);
    Log_(logger, input.substr(0, 64));
    LetWritesFail(false);
    const bool isOn = log4cxx::Logger::isErrorEnabledFor(logger);
    const std::size_t appenders = hierarchy->getRootLogger()->getAllAppenders().size();
    hierarchy->shutdown();
    return !failure.empty() ? failure
                            : std::string(isOn ? "on, " : "off, ") + (appenders == 0   ? "nowhere"
                                                                      : appenders == 1 ? "one appender"
                                                                                       : "many appenders");
}

Material Material_() {
    Material material = {.corpus = ReadByteCorpus("fuzz/corpus/log-configuration"),
                         .boundaries = L"\n=.,%{}$",
                         .highest = 0xFF,
                         .most = 2048}; // the reader of properties takes time by the square of their length
    AddTokens(material, L"\n | = | \\ | \\\n | # | \x80 | \xFF | log4j.rootLogger=ALL, a | log4j.logger. | INHERITED | "
                        L"log4j.additivity. | log4j.threshold= | log4j.debug=true | log4j.appender.a= | "
                        L"log4j.appender.a.layout= | ${TEMP} | ${a} | ${ | } | a=${a}");
    AddTokens(material, L"org.apache.log4j.FileAppender | org.apache.log4j.RollingFileAppender | "
                        L"org.apache.log4j.rolling.RollingFileAppender | org.apache.log4j.DailyRollingFileAppender | "
                        L"org.apache.log4j.ConsoleAppender | org.apache.log4j.OutputDebugStringAppender | "
                        L"org.apache.log4j.PatternLayout | org.apache.log4j.HTMLLayout | org.apache.log4j.JSONLayout | "
                        L"org.apache.log4j.xml.XMLLayout | org.apache.log4j.SimpleLayout");
    AddTokens(material, L".rollingPolicy=org.apache.log4j.rolling.FixedWindowRollingPolicy | "
                        L".rollingPolicy=org.apache.log4j.rolling.TimeBasedRollingPolicy | "
                        L".triggeringPolicy=org.apache.log4j.rolling.SizeBasedTriggeringPolicy | "
                        L".triggeringPolicy=org.apache.log4j.rolling.FilterBasedTriggeringPolicy | "
                        L".fileNamePattern=x%d{yyyy}%i.gz | .filter.1= | .File=x | .MaxFileSize=1 | .MaxBackupIndex= | "
                        L".encoding= | .encoding=UTF-16 | .Append=false | .BufferedIO=true | .BufferSize= | "
                        L".ImmediateFlush=false | 5MB | 99999999999GB");
    AddTokens(material, L".ConversionPattern= | % | %% | %n | %d{ | %d{ISO8601} | %d{%H:%M:%S,%Q} | %-2147483648.3p | "
                        L"%99999.99999m | %c{1} | %X{a}");
    material.tokens.emplace_back(1, L'\0');
    return material;
}

} // namespace

Target LogConfigurationTarget() {
    return {.name = "log-configuration",
            .material = Material_,
            .run = Run_,
            .raises = {},
            // log4cxx keeps every name of a class that it was ever asked for.
            .runsPerProcess = 10000};
}

} // namespace fuzz
