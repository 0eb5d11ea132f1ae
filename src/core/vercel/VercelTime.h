#pragma once

#include <QDateTime>

// Vercel's time stamps are milliseconds since the epoch held as doubles, and a body may carry any
// number there. These bound them to what a date holds (about ±275,000 years; not-a-number counts
// as 0) so that converting one to an integer never overflows.
qint64 boundedMilliseconds(double ms);
// The same instant as a UTC date.
QDateTime dateFromMilliseconds(double ms);
