#pragma once

#include <QByteArray>

// Compact bodies shaped like Vercel's real answers, with every key the API sends (most of which
// the decoder skips), built in code so the benchmark needs no fixture files.

// A /v6/deployments page of `count` git deployments.
QByteArray deploymentsPage(int count);
// A /v9/projects page of `count` projects, each with its latest deployments.
QByteArray projectsPage(int count);
