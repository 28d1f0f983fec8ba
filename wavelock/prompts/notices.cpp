#include "wavelock/prompts/notices.h"

#include <utility>

namespace wavelock {

void ShowNotice(Host& host, std::string text) {
  host.modal.ShowMessage({.source = ModalSource::kNotice, .text = std::move(text)});
}

void ShowNoticeById(Host& host, MessageNumber number, std::string_view insertion) {
  ModalText notice = NumberedMessage(number, insertion);
  notice.source = ModalSource::kNotice;
  host.modal.ShowMessage(notice);
}

}  // namespace wavelock
