// httpdate.h -- Date: a moment in local time, settable by total seconds or by field.
#pragma once

#include <cstdint>

namespace trelvane::http {

// TotalSeconds counts from the Unix epoch. Setting a field keeps the others
// and normalises the result as the local calendar does (31 April is 1 May,
// month 0 is December of the year before). Values far outside any calendar
// are clamped before they reach the conversion.
class Date {
 public:
  Date();                        // the present moment, to the whole second
  explicit Date(double totalSeconds) : total_(totalSeconds) {}

  double TotalSeconds() const { return total_; }
  void SetTotalSeconds(double v) { total_ = v; }

  void SetYear(int32_t v);
  void SetMonth(int32_t v);      // 1 to 12
  void SetDay(int32_t v);
  void SetHour(int32_t v);
  void SetMinute(int32_t v);
  void SetSecond(int32_t v);

  // Fields of the moment in local time (tests, owners).
  int32_t Year() const;
  int32_t Month() const;
  int32_t Day() const;
  int32_t Hour() const;
  int32_t Minute() const;
  int32_t Second() const;

 private:
  enum class Part { year, month, day, hour, minute, second };
  void set(Part part, int32_t v);
  int32_t get(Part part) const;
  double total_;
};

}  // namespace trelvane::http
