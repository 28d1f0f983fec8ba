// Notices: messages that are always shown, whatever a recording was told about keeping silent.
#pragma once

#include <string>
#include <string_view>

#include "wavelock/platform/host.h"
#include "wavelock/prompts/messages.h"

namespace wavelock {

void ShowNotice(Host& host, std::string text);
void ShowNoticeById(Host& host, MessageNumber number, std::string_view insertion = {});

}  // namespace wavelock
