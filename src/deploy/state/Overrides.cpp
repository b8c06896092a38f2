#include "deploy/state/Overrides.h"

#include "deploy/host/FileInPlace.h"

namespace ZET::Deploy {

QuietLog::QuietLog(ZETLogLevel threshold) : m_former(SetLogThreshold(threshold)) {
    if (m_former < threshold) SetLogThreshold(m_former);
}

QuietLog::~QuietLog() {
    SetLogThreshold(m_former);
}

LogToObserver::LogToObserver(Observer& observer)
    : m_tell([&observer](ZETLogLevel level, const std::string& text) {
          FileInPlace::Outside([&] {
              if (level == ZETLogError) return observer.Error(text);
              return level == ZETLogWarning ? observer.Warning(text) : observer.Detail(text);
          });
      }),
      m_former(SetThreadLogObserver(&m_tell)) {}

ParamOverride::ParamOverride(IZETCore& core, const std::string& key, const std::string& value)
    : m_core(core), m_key(key), m_former(core.GetParam(key)) {
    m_core.UpdateParam(key, value);
}

ParamOverride::~ParamOverride() {
    m_core.UpdateParam(m_key, m_former);
}

}  // namespace ZET::Deploy
