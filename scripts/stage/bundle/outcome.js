// The outcome of a call, as data: {value}, {error: [code, message, details]} or {missing: true}.

import { MethodChannel, MethodError, MissingMethodError } from './engine/method_channel.js';

export const platform = new MethodChannel('brevanholt/platform');

/** @param {string} method @param {unknown} [args] */
export async function call(method, args) {
  try {
    return { value: await platform.invokeMethod(method, args) };
  } catch (error) {
    if (error instanceof MissingMethodError) return { missing: true };
    if (error instanceof MethodError) return { error: [error.code, error.message, error.details] };
    throw error;
  }
}
