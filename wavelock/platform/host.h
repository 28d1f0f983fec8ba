// The services of the platform that an object of the library works with, handed in as one value.
#pragma once

#include "wavelock/platform/file_service.h"
#include "wavelock/platform/modal_interface.h"
#include "wavelock/platform/process.h"
#include "wavelock/platform/profile_store.h"

namespace wavelock {

// Borrows its services: they outlive every object that was given the host.
struct Host {
  FileService& files;
  ProfileStore& profile;
  ModalInterface& modal;
  Process& process;

  // The machine's own files, the user's profile, and a modal interface that speaks on standard error and asks
  // only on a terminal. The one global object of the library; its services may be used from many threads.
  static Host& Default();
};

}  // namespace wavelock
