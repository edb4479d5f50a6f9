// What the engine knows of this run of the application.

import { MethodChannel } from './method_channel.js';

const channel = new MethodChannel('engine/application');

/**
 * What was given as --ui-argument, in order.
 * @returns {Promise<string[]>}
 */
export function uiArguments() {
  return channel.invokeMethod('arguments');
}
