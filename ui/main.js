// Starts the application and shows it.

import { Application } from './model/application.js';
import { channel } from './platform.js';
import { errorText } from './view/notices.js';
import { mountWindow, showStartFailure } from './view/window.js';

try {
  const application = await Application.start();
  mountWindow(document.body, application, {
    invoke: (method, args) => channel.invokeMethod(method, args),
    listen: (heard) => channel.watchMethodCalls(heard),
  });
} catch (error) {
  console.error(error);
  showStartFailure(document.body, errorText(error));
}
