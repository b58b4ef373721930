// Small parts that several views use.
import { html, useEffect, useReducer, useState } from "./preact.mjs";
import { askAll } from "./feed.mjs";

// A view's own clock: draws it again `times` a second.
export function useTick(times) {
  const [, draw] = useReducer((count) => count + 1, 0);
  useEffect(() => {
    const timer = setInterval(draw, 1000 / times);
    return () => clearInterval(timer);
  }, [times]);
}

// [run, answer]: run(action) awaits the action; the answer is what to tell the user about it.
export function useAction() {
  const [answer, setAnswer] = useState(null);
  const run = async (action) => {
    setAnswer({ busy: true, text: "..." });
    try {
      const result = await action();
      setAnswer({ ok: true, text: result?.note ?? "done" });
      return result;
    } catch (error) {
      setAnswer({ ok: false, text: error.message });
      return null;
    }
  };
  return [run, answer];
}

// [send, answer]: send(...words) asks all these telephones, and returns the first one's answer.
export function useRequest(phones) {
  const [run, answer] = useAction();
  const send = (...words) => run(() => askAll(phones, words));
  return [send, answer];
}

export function Answer({ answer }) {
  const kind = !answer || answer.busy ? "busy" : answer.ok ? "done" : "refused";
  return html`<output class="answer ${kind}" aria-live="polite">${answer?.text ?? ""}</output>`;
}

// One button for each row [word, text], which does act(word). pressed: the word of the one that is on; undefined: none can be.
export function Buttons({ label, rows, pressed, act }) {
  return html`<div class="buttons" role="group" aria-label=${label}>
    ${rows.map(([word, text]) => html`<button type="button" aria-pressed=${pressed === undefined
      ? undefined : String(pressed === word)} onClick=${() => act(word)}>${text}</button>`)}
  </div>`;
}

export const Facts = ({ rows }) => html`<dl>
  ${Object.entries(rows).map(([name, text]) => html`<dt>${name}</dt><dd>${text}</dd>`)}
</dl>`;

export function Section({ title, name, children }) {
  return html`<section class=${name} aria-labelledby="title-${name}">
    <h2 id="title-${name}">${title}</h2>
    ${children}
  </section>`;
}
