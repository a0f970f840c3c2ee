// httpdate.cpp -- Date: a moment in local time, settable by total seconds or by field.
#include "http/httpdate.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <ctime>

namespace trelvane::http {
namespace {

// Far enough for any date a server writes, near enough that tm's int fields
// and the conversion cannot overflow.
constexpr int32_t kFieldLimit = 1000000;
constexpr double kSecondsLimit = 3.0e13;

std::tm broken(double total) {
  double t = std::isfinite(total) ? std::clamp(std::floor(total), -kSecondsLimit, kSecondsLimit) : 0.0;
  std::time_t tt = static_cast<std::time_t>(t);
  std::tm tm{};
  if (localtime_r(&tt, &tm) == nullptr) {
    tt = 0;
    localtime_r(&tt, &tm);
  }
  return tm;
}

}  // namespace

Date::Date() : total_(static_cast<double>(std::time(nullptr))) {}

void Date::set(Part part, int32_t v) {
  v = std::clamp(v, -kFieldLimit, kFieldLimit);
  std::tm tm = broken(total_);
  switch (part) {
    case Part::year: tm.tm_year = v - 1900; break;
    case Part::month: tm.tm_mon = v - 1; break;
    case Part::day: tm.tm_mday = v; break;
    case Part::hour: tm.tm_hour = v; break;
    case Part::minute: tm.tm_min = v; break;
    case Part::second: tm.tm_sec = v; break;
  }
  tm.tm_isdst = -1;
  errno = 0;
  std::time_t t = std::mktime(&tm);
  // mktime gives -1 both for an error and for one second before the epoch.
  if (t == static_cast<std::time_t>(-1) && errno != 0) return;
  total_ = static_cast<double>(t);
}

int32_t Date::get(Part part) const {
  std::tm tm = broken(total_);
  switch (part) {
    case Part::year: return tm.tm_year + 1900;
    case Part::month: return tm.tm_mon + 1;
    case Part::day: return tm.tm_mday;
    case Part::hour: return tm.tm_hour;
    case Part::minute: return tm.tm_min;
    case Part::second: return tm.tm_sec;
  }
  return 0;
}

void Date::SetYear(int32_t v) { set(Part::year, v); }
void Date::SetMonth(int32_t v) { set(Part::month, v); }
void Date::SetDay(int32_t v) { set(Part::day, v); }
void Date::SetHour(int32_t v) { set(Part::hour, v); }
void Date::SetMinute(int32_t v) { set(Part::minute, v); }
void Date::SetSecond(int32_t v) { set(Part::second, v); }

int32_t Date::Year() const { return get(Part::year); }
int32_t Date::Month() const { return get(Part::month); }
int32_t Date::Day() const { return get(Part::day); }
int32_t Date::Hour() const { return get(Part::hour); }
int32_t Date::Minute() const { return get(Part::minute); }
int32_t Date::Second() const { return get(Part::second); }

}  // namespace trelvane::http
